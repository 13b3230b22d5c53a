#include "colour/conversion.h"

#include <gtest/gtest.h>

bool operator==(const RGB &a, const RGB &b) {
    return a.r == b.r && a.g == b.g && a.b == b.b;
}
bool operator==(const HSL &a, const HSL &b) {
    return a.h == b.h && a.s == b.s && a.l == b.l;
}

namespace {

TEST(Conversion, CornersOfTheColourCube) {
    EXPECT_EQ(RGBToHSL({0, 0, 0}), (HSL{0, 0, 0}));
    EXPECT_EQ(RGBToHSL({255, 255, 255}), (HSL{0, 0, 100}));
    EXPECT_EQ(RGBToHSL({255, 0, 0}), (HSL{0, 100, 50}));
    EXPECT_EQ(RGBToHSL({0, 255, 0}), (HSL{120, 100, 50}));
    EXPECT_EQ(RGBToHSL({0, 0, 255}), (HSL{240, 100, 50}));
    EXPECT_EQ(RGBToHSL({255, 255, 0}).h, 60);
    EXPECT_EQ(RGBToHSL({255, 0, 255}).h, 300);
}

TEST(Conversion, GreysHaveNoHue) {
    for (int v = 0; v < 256; ++v) {
        const auto byte = static_cast<std::uint8_t>(v);
        const HSL hsl = RGBToHSL({byte, byte, byte});
        EXPECT_EQ(hsl.h, 0);
        EXPECT_EQ(hsl.s, 0);
    }
}

TEST(Conversion, VeryDarkCountsAsUnsaturated) {
    EXPECT_EQ(RGBToHSL({1, 0, 0}), (HSL{0, 0, 0}));
    EXPECT_EQ(RGBToHSL({0, 1, 0}), (HSL{120, 0, 0}));
}

TEST(Conversion, GreyAndScales) {
    EXPECT_EQ(HSLToRGB({0, 0, 50}, 360), (RGB{127, 127, 127}));
    EXPECT_EQ(HSLToRGB({160, 70, 40}, 320), HSLToRGB({180, 70, 40}, 360));
    EXPECT_EQ(HSLToRGB({213, 100, 50}, 320), (RGB{0, 1, 255}));
}

TEST(Conversion, AbsurdNumbersAreDefined) {
    for (const int n : {-2147483647 - 1, -1000, 1000, 2147483647}) {
        HSLToRGB({n, n, n}, 360);
        HSLToRGB({n, n, n}, 0);
    }
}

TEST(Conversion, MinAndMax) {
    EXPECT_EQ(Min(3, 1, 2), 1);
    EXPECT_EQ(Min(3, 2, 1), 1);
    EXPECT_EQ(Min(1, 2, 3), 1);
    EXPECT_EQ(Max(1, 3, 2), 3);
    EXPECT_EQ(Max(1, 2, 3), 3);
    EXPECT_EQ(Max(3, 1, 2), 3);
}

} // namespace
