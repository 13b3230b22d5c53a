#include "tests/platform/streamProbe.h"
#include "tests/support/virtualScreen.h"

#include <CoreGraphics/CoreGraphics.h>
#include <cstdlib>
#include <gtest/gtest.h>

using test::Frame;
using test::VirtualScreen;

namespace {

// The image's pixels, by the way that a one-shot grab takes.
Frame pixelsOf(CGImageRef image) {
    CFDataRef data = CGDataProviderCopyData(CGImageGetDataProvider(image));
    const Frame frame =
        test::frameOf(CFDataGetBytePtr(data), static_cast<int>(CGImageGetWidth(image)),
                      static_cast<int>(CGImageGetHeight(image)));
    CFRelease(data);
    return frame;
}

// The identifier of the monitor that has just been added in front of the others.
CGDirectDisplayID addMonitor(const VirtualScreen &screen, const std::string &geometry) {
    screen.run({"xrandr", "--setmonitor", "added", geometry, "none"});
    std::uint32_t count = 0;
    CGDirectDisplayID ids[2] = {};
    CGGetActiveDisplayList(2, ids, &count);
    EXPECT_EQ(count, 2u);
    return ids[0];
}

} // namespace

TEST(DisplayImage, ShowsEveryPixelAtAnOddWidth) {
    VirtualScreen screen(1365, 767);
    screen.use();
    const auto picture = test::noise(1365, 767, 1);
    screen.putPixels(0, 0, 1365, 767, picture.data());
    CGImageRef image = CGDisplayCreateImage(test::onlyDisplay());
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(CGImageGetWidth(image), 1365u);
    EXPECT_EQ(CGImageGetHeight(image), 767u);
    EXPECT_EQ(CGImageGetBitsPerPixel(image), 32u);
    EXPECT_EQ(pixelsOf(image).pixels, picture);
    CGImageRelease(image);
}

TEST(DisplayImage, IsOfTheMoment) {
    VirtualScreen screen(64, 48);
    screen.use();
    screen.fill(0x102030);
    CGImageRef before = CGDisplayCreateImage(test::onlyDisplay());
    screen.fill(0x405060);
    CGImageRef after = CGDisplayCreateImage(test::onlyDisplay());
    EXPECT_EQ(pixelsOf(before).at(10, 10), 0x102030u);
    EXPECT_EQ(pixelsOf(after).at(10, 10), 0x405060u);
    CGImageRelease(before);
    CGImageRelease(after);
}

TEST(DisplayImage, OfAMonitorShowsItsPartOfTheScreen) {
    VirtualScreen screen(300, 200);
    screen.use();
    const auto picture = test::noise(300, 200, 2);
    screen.putPixels(0, 0, 300, 200, picture.data());
    const CGDirectDisplayID id = addMonitor(screen, "101/10x77/10+33+55");
    CGImageRef image = CGDisplayCreateImage(id);
    ASSERT_NE(image, nullptr);
    const Frame frame = pixelsOf(image);
    CGImageRelease(image);
    ASSERT_EQ(frame.width, 101);
    ASSERT_EQ(frame.height, 77);
    for (int y = 0; y < 77; ++y)
        for (int x = 0; x < 101; ++x)
            ASSERT_EQ(frame.at(x, y), picture[static_cast<std::size_t>((55 + y) * 300 + 33 + x)]);
}

TEST(DisplayImage, IsBlackBeyondTheRootWindow) {
    VirtualScreen screen(300, 200);
    screen.use();
    const auto picture = test::noise(300, 200, 3);
    screen.putPixels(0, 0, 300, 200, picture.data());
    const CGDirectDisplayID id = addMonitor(screen, "120/10x90/10+250+150");
    CGImageRef image = CGDisplayCreateImage(id);
    ASSERT_NE(image, nullptr);
    const Frame frame = pixelsOf(image);
    CGImageRelease(image);
    ASSERT_EQ(frame.width, 120);
    ASSERT_EQ(frame.height, 90);
    for (int y = 0; y < 90; ++y)
        for (int x = 0; x < 120; ++x) {
            const bool inside = x < 50 && y < 50;
            ASSERT_EQ(frame.at(x, y),
                      inside ? picture[static_cast<std::size_t>((150 + y) * 300 + 250 + x)] : 0u);
        }
}

TEST(DisplayImage, OfAMonitorWhollyBeyondTheRootWindowIsBlack) {
    VirtualScreen screen(300, 200);
    screen.use();
    screen.fill(0xffffff);
    const CGDirectDisplayID id = addMonitor(screen, "20/10x10/10+400+300");
    CGImageRef image = CGDisplayCreateImage(id);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(pixelsOf(image).pixels, std::vector<std::uint32_t>(200, 0));
    CGImageRelease(image);
}

TEST(DisplayImage, OfAnUnknownDisplayIsNullNeverAnother) {
    const VirtualScreen screen(64, 48);
    screen.use();
    const CGDirectDisplayID id = test::onlyDisplay();
    for (const CGDirectDisplayID unknown : {0u, 1u, id + 1, id | 0x80000000u})
        EXPECT_EQ(CGDisplayCreateImage(unknown), nullptr);
    const CGDirectDisplayID added = addMonitor(screen, "20/10x10/10+0+0");
    CGImageRef image = CGDisplayCreateImage(added);
    EXPECT_NE(image, nullptr);
    CGImageRelease(image);
    screen.run({"xrandr", "--delmonitor", "added"});
    EXPECT_EQ(CGDisplayCreateImage(added), nullptr);
}

TEST(DisplayImage, WithoutAServerIsNull) {
    unsetenv("DISPLAY");
    EXPECT_EQ(CGDisplayCreateImage(1438993425u), nullptr);
}

TEST(DisplayImage, NullIsAnEmptyImage) {
    EXPECT_EQ(CGImageGetWidth(nullptr), 0u);
    EXPECT_EQ(CGImageGetHeight(nullptr), 0u);
    EXPECT_EQ(CGImageGetBitsPerPixel(nullptr), 0u);
    EXPECT_EQ(CGImageGetDataProvider(nullptr), nullptr);
    EXPECT_EQ(CGDataProviderCopyData(nullptr), nullptr);
    CGImageRelease(nullptr);
    CFRelease(nullptr);
}

TEST(DisplayImage, DataOutlivesItsImage) {
    VirtualScreen screen(16, 16);
    screen.use();
    screen.fill(0xabcdef);
    CGImageRef image = CGDisplayCreateImage(test::onlyDisplay());
    CFDataRef data = CGDataProviderCopyData(CGImageGetDataProvider(image));
    CGImageRelease(image);
    EXPECT_EQ(test::frameOf(CFDataGetBytePtr(data), 16, 16).at(15, 15), 0xabcdefu);
    CFRelease(data);
}

namespace {

class DepthTest : public testing::TestWithParam<int> {};

} // namespace

TEST_P(DepthTest, ImagesShowTheRightColours) {
    VirtualScreen screen(61, 40, GetParam());
    screen.use();
    // Values that every depth can show exactly or nearly so.
    const std::vector<std::uint32_t> colours = {0xff0000, 0x00ff00, 0x0000ff, 0xffffff,
                                                0x000000, 0x84c642, 0x104a8c};
    for (const std::uint32_t colour : colours) {
        screen.fill(colour);
        CGImageRef image = CGDisplayCreateImage(test::onlyDisplay());
        ASSERT_NE(image, nullptr);
        const Frame frame = pixelsOf(image);
        CGImageRelease(image);
        for (const int shift : {0, 8, 16})
            EXPECT_NEAR(static_cast<int>(frame.at(60, 39) >> shift & 0xff),
                        static_cast<int>(colour >> shift & 0xff), 4)
                << std::hex << colour << " became " << frame.at(60, 39);
    }
}

INSTANTIATE_TEST_SUITE_P(DisplayImage, DepthTest, testing::Values(15, 16, 24, 30));

TEST(DisplayImage, OfAPaletteScreenIsRefused) {
    const VirtualScreen screen(64, 48, 8);
    screen.use();
    EXPECT_NE(test::onlyDisplay(), 0u);
    EXPECT_EQ(CGDisplayCreateImage(test::onlyDisplay()), nullptr);
}
