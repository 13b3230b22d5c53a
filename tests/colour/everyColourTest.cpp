// Every colour there is, through RGBToHSL.
#include "colour/conversion.h"
#include "tests/colour/parallel.h"
#include "tests/colour/transcription.h"

#include <gtest/gtest.h>
#include <sstream>

namespace {

std::string show(const HSL &hsl) {
    return "{" + std::to_string(hsl.h) + ", " + std::to_string(hsl.s) + ", " +
           std::to_string(hsl.l) + "}";
}

TEST(EveryColour, HasTheHueSaturationAndLightnessOfTheRules) {
    EXPECT_EQ(test::complaints(1u << 24,
                               [](std::uint32_t word) -> std::string {
                                   const RGB rgb = transcription::unpacked(word);
                                   const HSL got = RGBToHSL(rgb);
                                   const HSL wanted = transcription::hslOf(rgb);
                                   if (got.h == wanted.h && got.s == wanted.s && got.l == wanted.l)
                                       return {};
                                   std::ostringstream text;
                                   text << std::hex << word << ": " << show(got) << ", not "
                                        << show(wanted);
                                   return text.str();
                               }),
              "");
}

TEST(EveryColour, StaysInRange) {
    EXPECT_EQ(test::complaints(1u << 24,
                               [](std::uint32_t word) -> std::string {
                                   const HSL got = RGBToHSL(transcription::unpacked(word));
                                   const bool inRange = got.h >= 0 && got.h < 360 && got.s >= 0 &&
                                                        got.s <= 100 && got.l >= 0 && got.l <= 100;
                                   return inRange ? std::string() : show(got);
                               }),
              "");
}

// Nothing that must be ignored may count.
TEST(EveryColour, TheSpareNumberIsNotRead) {
    EXPECT_EQ(show(RGBToHSL({200, 100, 50, 1e300})), show(RGBToHSL({200, 100, 50})));
}

} // namespace
