// The weight of a sample, for every saturation and lightness and far outside.
#include "colour/conversion.h"
#include "tests/colour/reference.h"

#include <gtest/gtest.h>
#include <limits>

namespace {

TEST(Weight, EverySaturationAndLightness) {
    for (int s = -600; s <= 600; ++s)
        for (int l = -200; l <= 300; ++l)
            ASSERT_EQ(hslBias({7, s, l}), reference::weightOf({7, s, l})) << s << " " << l;
}

TEST(Weight, InRangeItIsOneToTwenty) {
    int least = 1000;
    int most = 0;
    for (int s = 0; s <= 100; ++s)
        for (int l = 0; l <= 100; ++l) {
            const int w = hslBias({0, s, l});
            least = std::min(least, w);
            most = std::max(most, w);
        }
    EXPECT_EQ(least, 1);
    EXPECT_EQ(most, 20);
}

TEST(Weight, TheHueDoesNotCount) {
    for (const int h : {-1, 0, 5, 359, 360, std::numeric_limits<int>::max()})
        EXPECT_EQ(hslBias({h, 60, 20}), 6 + 10);
}

TEST(Weight, Examples) {
    EXPECT_EQ(hslBias({200, 100, 50}), 20);
    EXPECT_EQ(hslBias({200, 100, 10}), 3);
    EXPECT_EQ(hslBias({200, 0, 0}), 1);
    EXPECT_EQ(hslBias({0, 100, 11}), 13);
    EXPECT_EQ(hslBias({0, 43, 33}), 20); // each part at its limit, then one below
    EXPECT_EQ(hslBias({0, 39, 30}), 19);
    EXPECT_EQ(hslBias({0, 44, 36}), 20);
    EXPECT_EQ(hslBias({0, 3, 11}), 3);
    EXPECT_EQ(hslBias({0, 4, 11}), 4);
}

TEST(Weight, TheLeastAndTheLargestIntegers) {
    for (const int s : {std::numeric_limits<int>::min(), -1, std::numeric_limits<int>::max()})
        for (const int l : {std::numeric_limits<int>::min(), -1, std::numeric_limits<int>::max()})
            EXPECT_EQ(hslBias({0, s, l}), reference::weightOf({0, s, l})) << s << " " << l;
}

} // namespace
