// Monitors that change while a stream runs.
#include "tests/platform/processUsage.h"
#include "tests/platform/streamProbe.h"
#include "tests/support/virtualScreen.h"

#include <gtest/gtest.h>

using test::Frame;
using test::PictureScreen;
using test::StreamProbe;
using namespace std::chrono_literals;

namespace {

constexpr auto complete = kCGDisplayStreamFrameStatusFrameComplete;
constexpr auto blank = kCGDisplayStreamFrameStatusFrameBlank;

class MonitorChange : public testing::Test {
protected:
    CGDirectDisplayID setMonitor(const std::string &geometry) {
        return test::addMonitor(screen, geometry, "watched");
    }
    void deleteMonitor() { screen.run({"xrandr", "--delmonitor", "watched"}); }

    // This part of the picture as a frame of 100 x 80.
    Frame part(int left, int top, int width, int height) const {
        return screen.part(left, top, width, height, 100, 80);
    }

    PictureScreen screen{400, 300};
    const CGDirectDisplayID id = setMonitor("100/10x80/10+20+30");
};

} // namespace

TEST_F(MonitorChange, GoneMeansBlankOnceAndFramesResumeOnItsReturn) {
    StreamProbe stream(id, 100, 80, 0.01);
    ASSERT_TRUE(stream.startAndWait());
    EXPECT_TRUE(stream.latestFrame() == part(20, 30, 100, 80));

    deleteMonitor();
    ASSERT_TRUE(stream.waitForCount(blank, 1));
    EXPECT_FALSE(stream.calls().back().hasSurface);
    const std::size_t calls = stream.calls().size();
    for (std::uint32_t i = 0; i < 20; ++i)
        screen.fillRect(0, 0, 10, 10, i);
    EXPECT_FALSE(stream.waitForCalls(calls + 1, 300ms));

    setMonitor("100/10x80/10+200+100");
    ASSERT_TRUE(stream.waitForCalls(calls + 1));
    EXPECT_EQ(stream.calls().back().status, complete);
    EXPECT_TRUE(stream.waitForFrame(part(200, 100, 100, 80)));
    screen.fillRect(210, 110, 5, 5, 0x123456);
    EXPECT_TRUE(stream.waitForPixel(11, 11, 0x123456));
    EXPECT_EQ(stream.count(blank), 1u);
    EXPECT_EQ(stream.stop(), kCGErrorSuccess);
}

TEST_F(MonitorChange, ResizedMeansScaledAndTheFrameKeepsItsSize) {
    StreamProbe stream(id, 100, 80, 0.01);
    ASSERT_TRUE(stream.startAndWait());
    const int sizes[][4] = {{50, 40, 0, 0}, {333, 222, 7, 9}, {100, 80, 20, 30}, {1, 1, 399, 299}};
    for (const auto &[width, height, x, y] : sizes) {
        deleteMonitor();
        setMonitor(std::to_string(width) + "/10x" + std::to_string(height) + "/10+" +
                   std::to_string(x) + "+" + std::to_string(y));
        EXPECT_TRUE(stream.waitForFrame(part(x, y, width, height))) << width;
    }
}

TEST_F(MonitorChange, ScaledFramesFollowSmallChanges) {
    StreamProbe stream(id, 100, 80, 0.01);
    ASSERT_EQ(stream.start(), kCGErrorSuccess);
    deleteMonitor();
    setMonitor("200/10x160/10+10+20");
    ASSERT_TRUE(stream.waitForFrame(part(10, 20, 200, 160)));
    screen.paint(110, 20, 4, 4, 0x998877);
    EXPECT_TRUE(stream.waitForFrame(part(10, 20, 200, 160)));
}

TEST_F(MonitorChange, AShrinkingScreenIsSurvived) {
    const std::string whole = screen.mode();
    screen.run({"xrandr", "--newmode", "small", "30", "240", "248", "260", "280", "180", "190",
                "192", "200"});
    screen.run({"xrandr", "--addmode", screen.output(), "small"});
    deleteMonitor();
    setMonitor("400/10x300/10+0+0");
    StreamProbe stream(id, 400, 300, 0.01);
    ASSERT_TRUE(stream.startAndWait());
    screen.run({"xrandr", "--output", screen.output(), "--mode", "small"});
    // Beyond the smaller root window the frame is black.
    EXPECT_TRUE(stream.waitForPixel(399, 299, 0));
    screen.fillRect(0, 0, 240, 180, 0x31415f);
    EXPECT_TRUE(stream.waitForPixel(239, 179, 0x31415f));
    EXPECT_EQ(stream.latestFrame().at(240, 179), 0u);
    screen.run({"xrandr", "--output", screen.output(), "--mode", whole});
    screen.fillRect(0, 0, 400, 300, 0x27182a);
    EXPECT_TRUE(stream.waitForPixel(399, 299, 0x27182a));
}

TEST_F(MonitorChange, TheModeOfARealOutputIsFollowed) {
    deleteMonitor();
    const CGDirectDisplayID output = test::onlyDisplay();
    screen.run({"xrandr", "--newmode", "small", "30", "200", "208", "220", "240", "150", "160",
                "162", "170"});
    screen.run({"xrandr", "--addmode", screen.output(), "small"});
    StreamProbe stream(output, 400, 300, 0.01);
    ASSERT_TRUE(stream.startAndWait());
    screen.run({"xrandr", "--output", screen.output(), "--mode", "small"});
    screen.fillRect(0, 0, 200, 150, 0x101010);
    screen.fillRect(199, 149, 1, 1, 0xffeedd);
    // The one pixel in the corner has become four.
    EXPECT_TRUE(stream.waitForPixel(399, 299, 0xffeedd));
    EXPECT_TRUE(stream.waitForPixel(398, 298, 0xffeedd));
    EXPECT_EQ(stream.latestFrame().at(397, 297), 0x101010u);
}

TEST_F(MonitorChange, OfAnotherMonitorChangesNothing) {
    StreamProbe stream(id, 100, 80, 0.01);
    ASSERT_TRUE(stream.startAndWait());
    screen.run({"xrandr", "--setmonitor", "other", "50/10x50/10+0+0", "none"});
    screen.run({"xrandr", "--delmonitor", "other"});
    EXPECT_FALSE(stream.waitForCalls(2, 300ms));
}

TEST_F(MonitorChange, ManyChangesLeaveNothingBehind) {
    StreamProbe stream(id, 100, 80);
    ASSERT_TRUE(stream.startAndWait());
    const std::size_t descriptors = test::openDescriptors();
    const std::size_t mappings = test::mappings();
    constexpr std::size_t rounds = 60;
    for (std::size_t round = 1; round <= rounds; ++round) {
        deleteMonitor();
        ASSERT_TRUE(stream.waitForCount(blank, round));
        setMonitor("50/10x40/10+0+0");
        ASSERT_TRUE(stream.waitForCount(complete, round + 1));
    }
    EXPECT_TRUE(test::openDescriptorsBecome(descriptors));
    // Fewer than one per round; a sanitizer adds mappings over time.
    EXPECT_LT(test::mappings(), mappings + rounds / 2);
}
