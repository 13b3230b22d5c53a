// HSLToRGB over its whole range at the scales in use, and far outside it.
#include "colour/conversion.h"
#include "tests/colour/parallel.h"
#include "tests/colour/reference.h"

#include <gtest/gtest.h>
#include <random>
#include <sstream>

namespace {

std::string complaintAbout(const HSL &hsl, int scale) {
    const RGB got = HSLToRGB(hsl, scale);
    const RGB wanted = reference::rgbOf(hsl, scale);
    if (got.r == wanted.r && got.g == wanted.g && got.b == wanted.b && got.spare == 0.0)
        return {};
    std::ostringstream text;
    text << hsl.h << " " << hsl.s << " " << hsl.l << " of " << scale << ": " << std::hex
         << reference::packed(got) << ", not " << reference::packed(wanted);
    return text.str();
}

class HslRange : public testing::TestWithParam<int> {};

TEST_P(HslRange, EveryHueSaturationAndLightness) {
    const int scale = GetParam();
    EXPECT_EQ(
        test::complaints(static_cast<std::uint32_t>(scale + 1) * 101 * 101,
                         [&](std::uint32_t i) {
                             const int n = static_cast<int>(i);
                             return complaintAbout({n / 10201, n / 101 % 101, n % 101}, scale);
                         }),
        "");
}

// Values out of range are converted as well: a leader's old weight can push the averages of a dark
// screen far beyond 100. Only the low eight bits of each channel are kept.
TEST_P(HslRange, OutOfRange) {
    const int scale = GetParam();
    std::mt19937 random(static_cast<unsigned>(scale));
    std::vector<HSL> far;
    for (int i = 0; i < 300000; ++i)
        far.push_back({static_cast<int>(random() % 1441) - 720,
                       static_cast<int>(random() % 3001) - 500,
                       static_cast<int>(random() % 1001) - 300});
    for (const HSL &hsl : far)
        ASSERT_EQ(complaintAbout(hsl, scale), "");
}

INSTANTIATE_TEST_SUITE_P(Scales, HslRange, testing::Values(80, 320, 360, 1, 7),
                         testing::PrintToStringParamName());

TEST(HslToRgb, GreysOfAnyHue) {
    for (int l = -300; l <= 600; ++l)
        for (const int h : {-7, 0, 160, 319, 5000})
            ASSERT_EQ(complaintAbout({h, 0, l}, 320), "");
}

TEST(HslToRgb, HalfWayRoundIsTheSameOnEveryScale) {
    for (int s = 0; s <= 100; ++s)
        for (int l = 0; l <= 100; ++l)
            ASSERT_EQ(reference::packed(HSLToRGB({160, s, l}, 320)),
                      reference::packed(HSLToRGB({180, s, l}, 360)));
}

} // namespace
