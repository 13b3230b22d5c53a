// What only a Wayland session has: outputs that are turned and scaled, and a compositor that is
// told to change them. Needs MIRROR_TEST_SERVER=sway.
#include "platform/objects/displayIds.h"
#include "tests/platform/streamProbe.h"
#include "tests/support/virtualScreen.h"

#include <CoreGraphics/CoreGraphics.h>
#include <algorithm>
#include <atomic>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

using test::Frame;
using test::PictureScreen;
using test::StreamProbe;
using test::UsedScreen;
using namespace std::chrono_literals;

namespace {

const std::string output = "output HEADLESS-1 ";

void tell(const test::VirtualScreen &screen, const std::string &command) {
    std::vector<std::string> words = {"swaymsg"};
    std::istringstream stream(command);
    for (std::string word; stream >> word;)
        words.push_back(word);
    screen.run(words);
}

Frame imageOf(CGDirectDisplayID display) {
    CGImageRef image = CGDisplayCreateImage(display);
    if (image == nullptr)
        return {};
    CFDataRef data = CGDataProviderCopyData(CGImageGetDataProvider(image));
    const Frame frame =
        test::frameOf(CFDataGetBytePtr(data), static_cast<int>(CGImageGetWidth(image)),
                      static_cast<int>(CGImageGetHeight(image)));
    CFRelease(data);
    CGImageRelease(image);
    return frame;
}

// What an independent program captures, which writes a header of three lines and three bytes per
// pixel.
Frame otherCapture(const test::VirtualScreen &screen) {
    const std::string file = screen.run({"grim", "-t", "ppm", "-"});
    std::istringstream stream(file);
    std::string kind;
    int largest = 0;
    Frame frame;
    stream >> kind >> frame.width >> frame.height >> largest;
    stream.get();
    for (int i = 0; i < frame.width * frame.height; ++i) {
        unsigned char rgb[3] = {};
        stream.read(reinterpret_cast<char *>(rgb), 3);
        frame.pixels.push_back(static_cast<std::uint32_t>(rgb[0] << 16 | rgb[1] << 8 | rgb[2]));
    }
    return stream ? frame : Frame{};
}

class Setting : public testing::TestWithParam<const char *> {};

} // namespace

TEST_P(Setting, ShowsEveryPixelUpright) {
    PictureScreen screen(400, 200, {output + GetParam()});
    const CGDirectDisplayID display = test::onlyDisplay();
    EXPECT_TRUE(imageOf(display) == screen.picture);
    EXPECT_TRUE(otherCapture(screen) == screen.picture);
    StreamProbe stream(display, 400, 200, 0.01);
    ASSERT_TRUE(stream.startAndWait());
    EXPECT_TRUE(stream.latestFrame() == screen.picture);
    screen.paint(7, 9, 30, 1, 0x123456);
    EXPECT_TRUE(stream.waitForFrame(screen.picture));
    StreamProbe scaled(display, 77, 133);
    ASSERT_TRUE(scaled.startAndWait());
    EXPECT_TRUE(scaled.latestFrame() == screen.part(0, 0, 400, 200, 77, 133));
}

INSTANTIATE_TEST_SUITE_P(WaylandOutput, Setting,
                         testing::Values("transform 90", "transform 180", "transform 270",
                                         "transform flipped", "transform flipped-90",
                                         "transform flipped-180", "transform flipped-270",
                                         "scale 2", "scale 1.25"));

TEST(WaylandOutput, IdentifiersComeFromTheNames) {
    std::vector<CGDirectDisplayID> before;
    {
        const UsedScreen screen(320, 200);
        EXPECT_EQ(test::onlyDisplay(), platform::displayIdsOf({"HEADLESS-1"}).at(0));
        tell(screen, "create_output");
        tell(screen, "create_output");
        before = test::activeDisplays();
        EXPECT_EQ(before, platform::displayIdsOf({"HEADLESS-1", "HEADLESS-2", "HEADLESS-3"}));
        std::uint32_t count = 0;
        std::vector<CGDirectDisplayID> two(2);
        EXPECT_EQ(CGGetActiveDisplayList(2, two.data(), &count), kCGErrorSuccess);
        EXPECT_EQ(count, 2u);
        EXPECT_EQ(two.at(1), before.at(1));
    }
    const UsedScreen screen(640, 400);
    tell(screen, "create_output");
    const auto after = test::activeDisplays();
    ASSERT_EQ(after.size(), 2u);
    EXPECT_TRUE(std::equal(after.begin(), after.end(), before.begin()));
}

TEST(WaylandOutput, AnUnknownDisplayIsNeverAnother) {
    const UsedScreen screen(64, 48);
    const CGDirectDisplayID id = test::onlyDisplay();
    for (const CGDirectDisplayID unknown : {0u, 1u, id + 1, id | 0x80000000u}) {
        EXPECT_EQ(CGDisplayCreateImage(unknown), nullptr);
        EXPECT_EQ(StreamProbe(unknown, 64, 48).get(), nullptr);
    }
}

TEST(WaylandOutput, AnotherOutputsDrawingCausesNoFrame) {
    UsedScreen screen(64, 48);
    tell(screen, "create_output");
    tell(screen, "output HEADLESS-2 resolution 100x80");
    const auto displays = test::activeDisplays();
    ASSERT_EQ(displays.size(), 2u);
    StreamProbe stream(displays.at(1), 100, 80, 0.01);
    ASSERT_TRUE(stream.startAndWait());
    for (int i = 0; i < 20; ++i) {
        screen.fill(static_cast<std::uint32_t>(i * 0x0a0a0a));
        EXPECT_FALSE(stream.waitForCalls(2, 30ms));
    }
}

TEST(WaylandOutput, ANewModeIsFollowed) {
    UsedScreen screen(400, 300);
    StreamProbe stream(test::onlyDisplay(), 400, 300, 0.01);
    ASSERT_TRUE(stream.startAndWait());
    screen.fill(0xff0000);
    ASSERT_TRUE(stream.waitForPixel(399, 299, 0xff0000));
    for (const auto &[mode, colour] : {std::pair("200x150", 0x00ff00u), {"800x600", 0x0000ffu}}) {
        tell(screen, output + "resolution " + mode);
        screen.fill(colour);
        // The window is scaled to the mode, which may blend its edges.
        EXPECT_TRUE(stream.waitForPixel(390, 290, colour)) << mode;
        EXPECT_TRUE(stream.waitForPixel(10, 10, colour)) << mode;
    }
    const Frame image = imageOf(test::onlyDisplay());
    EXPECT_EQ(image.width, 800);
    EXPECT_EQ(image.height, 600);
}

TEST(WaylandOutput, WhileItIsTurnedNoFrameIsUpsideDown) {
    PictureScreen screen(400, 200);
    std::atomic<bool> turning = true;
    std::atomic<int> wrong = 0;
    StreamProbe stream(test::onlyDisplay(), 400, 200, 0.01);
    stream.onCall = [&](const test::HandlerCall &call) {
        if (turning && call.status == kCGDisplayStreamFrameStatusFrameComplete &&
            stream.latestFrame() != screen.picture)
            ++wrong;
    };
    ASSERT_TRUE(stream.startAndWait());
    for (const char *transform : {"180", "flipped", "flipped-180", "normal"})
        tell(screen, output + "transform " + transform);
    turning = false;
    screen.paint(0, 0, 1, 1, 0x102030);
    EXPECT_TRUE(stream.waitForFrame(screen.picture));
    EXPECT_EQ(wrong, 0);
}
