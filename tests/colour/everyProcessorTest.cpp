// The conversions against sums that were taken on x86-64. The reference cannot replace them: a
// processor that fuses a multiplication and an addition could round both of them alike.
#include "colour/conversion.h"
#include "tests/colour/reference.h"

#include <gtest/gtest.h>

namespace {

// A number for the sum that depends on every bit of an argument and its result.
std::uint64_t mixed(std::uint64_t bits) {
    bits = (bits ^ bits >> 30) * 0xbf58476d1ce4e5b9;
    bits = (bits ^ bits >> 27) * 0x94d049bb133111eb;
    return bits ^ bits >> 31;
}

std::uint64_t bitsOf(HSL hsl) {
    return static_cast<std::uint64_t>(hsl.h) << 16 | static_cast<std::uint64_t>(hsl.s) << 8 |
           static_cast<std::uint64_t>(hsl.l);
}

TEST(EveryProcessor, ConvertsEveryColourAlike) {
    std::uint64_t sum = 0;
    for (std::uint32_t word = 0; word < 1u << 24; ++word)
        sum += mixed(bitsOf(RGBToHSL(reference::unpacked(word))) << 24 | word);
    EXPECT_EQ(sum, 4330172742104973160u);
}

TEST(EveryProcessor, ConvertsEveryHueSaturationAndLightnessAlike) {
    std::uint64_t sum = 0;
    for (const int scale : {80, 320, 360})
        for (int h = 0; h <= scale; ++h)
            for (int s = 0; s <= 100; ++s)
                for (int l = 0; l <= 100; ++l)
                    sum += mixed(bitsOf({h, s, l}) << 24 |
                                 reference::packed(HSLToRGB({h, s, l}, scale)));
    EXPECT_EQ(sum, 17502172771223344504u);
}

} // namespace
