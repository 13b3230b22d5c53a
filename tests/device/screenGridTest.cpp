#include "device/screenGrid.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

std::vector<int> grid(std::uint64_t width, std::uint64_t height, int before = -7) {
    std::vector<int> samples(screenSampleCount, before);
    fillScreenGrid(width, height, samples.data());
    return samples;
}

TEST(ScreenGrid, FullHdKeeps73ColumnsAnd49Rows) {
    const std::vector<int> samples = grid(1920, 1080);
    for (int i = 0; i < screenSampleCount; ++i)
        ASSERT_EQ(samples[static_cast<std::size_t>(i)],
                  (108 + i % 87 * 10) * 1920 + 192 + i / 87 * 19)
            << i;
    EXPECT_EQ(6400 / 87, 73);
    EXPECT_EQ(samples.back(), (108 + 48 * 10) * 1920 + 192 + 73 * 19);
}

TEST(ScreenGrid, SmallScreenLeavesTheRestAsItWas) {
    const std::vector<int> samples = grid(100, 50);
    EXPECT_EQ(samples[0], 5 * 100 + 10);
    EXPECT_EQ(samples[39], 44 * 100 + 10);
    EXPECT_EQ(samples[3199], 44 * 100 + 89);
    for (std::size_t i = 3200; i < samples.size(); ++i)
        ASSERT_EQ(samples[i], -7) << i;
}

TEST(ScreenGrid, TinyScreenHasNoMargin) {
    const std::vector<int> samples = grid(5, 5);
    for (int i = 0; i < 25; ++i)
        EXPECT_EQ(samples[static_cast<std::size_t>(i)], i % 5 * 5 + i / 5);
    EXPECT_EQ(samples[25], -7);
}

TEST(ScreenGrid, NoScreenWritesNothing) {
    EXPECT_EQ(grid(0, 0), std::vector<int>(screenSampleCount, -7));
    EXPECT_EQ(grid(1920, 0), std::vector<int>(screenSampleCount, -7));
}

} // namespace
