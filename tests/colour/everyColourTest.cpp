// RGBToHSL for every possible colour.
#include "colour/bias.h"
#include "colour/conversion.h"
#include "colour/hueBucket.h"
#include "tests/colour/parallel.h"
#include "tests/colour/reference.h"

#include <gtest/gtest.h>
#include <sstream>

namespace {

std::string show(const HSL &hsl) {
    return "{" + std::to_string(hsl.h) + ", " + std::to_string(hsl.s) + ", " +
           std::to_string(hsl.l) + "}";
}

std::string complaintAbout(std::uint32_t word) {
    const RGB rgb = reference::unpacked(word);
    const HSL got = RGBToHSL(rgb);
    const HSL wanted = reference::hslOf(rgb);
    const bool same = got.h == wanted.h && got.s == wanted.s && got.l == wanted.l;
    const bool inRange =
        got.h >= 0 && got.h < 360 && got.s >= 0 && got.s <= 100 && got.l >= 0 && got.l <= 100;
    if (same && inRange)
        return {};
    std::ostringstream text;
    text << std::hex << word << ": " << show(got) << ", not " << show(wanted);
    return text.str();
}

TEST(EveryColour, HasTheHueSaturationAndLightnessOfTheRules) {
    EXPECT_EQ(test::complaints(1u << 24, complaintAbout), "");
}

// Pixel words converted in blocks give the same colours, whatever their fourth bytes hold.
std::string complaintAboutBlock(std::uint32_t block) {
    constexpr std::uint32_t capacity = HSLColumns::capacity;
    std::uint32_t words[capacity];
    for (std::uint32_t i = 0; i < capacity; ++i)
        words[i] = (block * 2654435761u & 0xff000000u) | (block * capacity + i);
    for (const WordsToHSL wordsToHSL : conversions()) {
        HSLColumns columns;
        wordsToHSL(words, columns);
        WeightedColour weighted[capacity];
        weightColours(columns, maxBias, weighted);
        for (int i = 0; i < HSLColumns::capacity; ++i) {
            const HSL wanted = reference::hslOf(reference::unpacked(words[i]));
            const HSL got{columns.hue[i], columns.saturation[i], columns.lightness[i]};
            if (got.h != wanted.h || got.s != wanted.s || got.l != wanted.l)
                return std::to_string(words[i]) + ": " + show(got) + ", not " + show(wanted);
            const WeightedColour &counted = weighted[i];
            const int weight = reference::weightOf(wanted);
            if (counted.count != weight || counted.saturation != weight * wanted.s ||
                counted.lightness != weight * wanted.l || counted.none != 0)
                return std::to_string(words[i]) + ": counts " + std::to_string(counted.count);
        }
    }
    return {};
}

TEST(EveryColour, InBlocks) {
    EXPECT_EQ(test::complaints((1u << 24) / HSLColumns::capacity, complaintAboutBlock), "");
}

TEST(EveryColour, TheSpareNumberIsNotRead) {
    EXPECT_EQ(show(RGBToHSL({200, 100, 50, 1e300})), show(RGBToHSL({200, 100, 50})));
}

} // namespace
