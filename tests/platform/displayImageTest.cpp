#include "tests/platform/streamProbe.h"
#include "tests/support/virtualScreen.h"

#include <CoreGraphics/CoreGraphics.h>
#include <cstdlib>
#include <gtest/gtest.h>

using test::Frame;
using test::PictureScreen;
using test::UsedScreen;

namespace {

// The image's pixels, read as a one-shot grab reads them.
Frame pixelsOf(CGImageRef image) {
    CFDataRef data = CGDataProviderCopyData(CGImageGetDataProvider(image));
    const Frame frame =
        test::frameOf(CFDataGetBytePtr(data), static_cast<int>(CGImageGetWidth(image)),
                      static_cast<int>(CGImageGetHeight(image)));
    CFRelease(data);
    return frame;
}

// The pixels of a new image of the display.
Frame grab(CGDirectDisplayID id) {
    CGImageRef image = CGDisplayCreateImage(id);
    EXPECT_NE(image, nullptr);
    if (image == nullptr)
        return {};
    EXPECT_EQ(CGImageGetBitsPerPixel(image), 32u);
    const Frame frame = pixelsOf(image);
    CGImageRelease(image);
    return frame;
}

} // namespace

TEST(DisplayImage, ShowsEveryPixelAtAnOddWidth) {
    const PictureScreen screen(1365, 767);
    EXPECT_TRUE(grab(test::onlyDisplay()) == screen.picture);
}

TEST(DisplayImage, IsOfTheMoment) {
    UsedScreen screen(64, 48);
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
    const PictureScreen screen(300, 200);
    const CGDirectDisplayID id = test::addMonitor(screen, "101/10x77/10+33+55");
    EXPECT_TRUE(grab(id) == screen.part(33, 55, 101, 77));
}

TEST(DisplayImage, IsBlackBeyondTheRootWindow) {
    const PictureScreen screen(300, 200);
    const CGDirectDisplayID partly = test::addMonitor(screen, "120/10x90/10+250+150");
    EXPECT_TRUE(grab(partly) == screen.part(250, 150, 120, 90));
    screen.run({"xrandr", "--delmonitor", "added"});
    const CGDirectDisplayID wholly = test::addMonitor(screen, "20/10x10/10+400+300");
    EXPECT_EQ(grab(wholly).pixels, std::vector<std::uint32_t>(200, 0));
}

TEST(DisplayImage, OfAnUnknownDisplayIsNullNeverAnother) {
    const UsedScreen screen(64, 48);
    const CGDirectDisplayID id = test::onlyDisplay();
    for (const CGDirectDisplayID unknown : {0u, 1u, id + 1, id | 0x80000000u})
        EXPECT_EQ(CGDisplayCreateImage(unknown), nullptr);
    const CGDirectDisplayID added = test::addMonitor(screen, "20/10x10/10+0+0");
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
    UsedScreen screen(16, 16);
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
    UsedScreen screen(61, 40, GetParam());
    // Values that every depth can show exactly or nearly so.
    const std::vector<std::uint32_t> colours = {0xff0000, 0x00ff00, 0x0000ff, 0xffffff,
                                                0x000000, 0x84c642, 0x104a8c};
    for (const std::uint32_t colour : colours) {
        screen.fill(colour);
        const Frame frame = grab(test::onlyDisplay());
        ASSERT_EQ(frame.width, 61);
        for (const int shift : {0, 8, 16})
            EXPECT_NEAR(static_cast<int>(frame.at(60, 39) >> shift & 0xff),
                        static_cast<int>(colour >> shift & 0xff), 4)
                << std::hex << colour << " became " << frame.at(60, 39);
    }
}

INSTANTIATE_TEST_SUITE_P(DisplayImage, DepthTest, testing::Values(15, 16, 24, 30));

TEST(DisplayImage, OfAPaletteScreenIsRefused) {
    const UsedScreen screen(64, 48, 8);
    EXPECT_NE(test::onlyDisplay(), 0u);
    EXPECT_EQ(CGDisplayCreateImage(test::onlyDisplay()), nullptr);
}
