// Monitors that change while a stream runs.
#include "tests/platform/processUsage.h"
#include "tests/platform/streamProbe.h"
#include "tests/support/virtualScreen.h"

#include <gtest/gtest.h>

using test::Frame;
using test::StreamProbe;
using test::VirtualScreen;
using namespace std::chrono_literals;

namespace {

constexpr auto complete = kCGDisplayStreamFrameStatusFrameComplete;
constexpr auto blank = kCGDisplayStreamFrameStatusFrameBlank;

class MonitorChange : public testing::Test {
protected:
    MonitorChange() : picture(test::noise(400, 300, 11)) {
        screen.use();
        screen.putPixels(0, 0, 400, 300, picture.data());
        setMonitor("100/10x80/10+20+30");
        CGDirectDisplayID ids[2] = {};
        std::uint32_t count = 0;
        CGGetActiveDisplayList(2, ids, &count);
        id = ids[0];
    }

    void setMonitor(const std::string &geometry) {
        screen.run({"xrandr", "--setmonitor", "watched", geometry, "none"});
    }
    void deleteMonitor() { screen.run({"xrandr", "--delmonitor", "watched"}); }

    // Whether a frame of 100 × 80 shows this part of the picture.
    bool shows(const Frame &frame, int left, int top, int width, int height) const {
        for (int y = 0; y < 80; ++y)
            for (int x = 0; x < 100; ++x) {
                const int row = top + y * height / 80;
                const int column = left + x * width / 100;
                if (frame.at(x, y) != picture[static_cast<std::size_t>(row * 400 + column)])
                    return false;
            }
        return true;
    }

    VirtualScreen screen{400, 300};
    std::vector<std::uint32_t> picture;
    CGDirectDisplayID id = 0;
};

} // namespace

TEST_F(MonitorChange, GoneMeansBlankOnceAndFramesResumeOnItsReturn) {
    StreamProbe stream(id, 100, 80, 0.01);
    ASSERT_EQ(stream.start(), kCGErrorSuccess);
    ASSERT_TRUE(stream.waitForCount(complete, 1));
    EXPECT_TRUE(shows(stream.latestFrame(), 20, 30, 100, 80));

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
    EXPECT_TRUE(
        stream.waitForFrame([&](const Frame &frame) { return shows(frame, 200, 100, 100, 80); }));
    screen.fillRect(210, 110, 5, 5, 0x123456);
    EXPECT_TRUE(stream.waitForPixel(11, 11, 0x123456));
    EXPECT_EQ(stream.count(blank), 1u);
    EXPECT_EQ(stream.stop(), kCGErrorSuccess);
}

TEST_F(MonitorChange, ResizedMeansScaledAndTheFrameKeepsItsSize) {
    StreamProbe stream(id, 100, 80, 0.01);
    ASSERT_EQ(stream.start(), kCGErrorSuccess);
    ASSERT_TRUE(stream.waitForCount(complete, 1));
    const int sizes[][4] = {{50, 40, 0, 0}, {333, 222, 7, 9}, {100, 80, 20, 30}, {1, 1, 399, 299}};
    for (const auto &[width, height, x, y] : sizes) {
        deleteMonitor();
        setMonitor(std::to_string(width) + "/10x" + std::to_string(height) + "/10+" +
                   std::to_string(x) + "+" + std::to_string(y));
        EXPECT_TRUE(stream.waitForFrame([&, w = width, h = height, l = x,
                                         t = y](const Frame &frame) {
            return shows(frame, l, t, w, h);
        })) << width;
    }
}

TEST_F(MonitorChange, ScaledFramesFollowSmallChanges) {
    StreamProbe stream(id, 100, 80, 0.01);
    ASSERT_EQ(stream.start(), kCGErrorSuccess);
    deleteMonitor();
    setMonitor("200/10x160/10+10+20");
    ASSERT_TRUE(
        stream.waitForFrame([&](const Frame &frame) { return shows(frame, 10, 20, 200, 160); }));
    for (int row = 20; row < 24; ++row)
        for (int column = 110; column < 114; ++column)
            picture[static_cast<std::size_t>(row * 400 + column)] = 0x998877;
    screen.fillRect(110, 20, 4, 4, 0x998877);
    EXPECT_TRUE(
        stream.waitForFrame([&](const Frame &frame) { return shows(frame, 10, 20, 200, 160); }));
}

TEST_F(MonitorChange, AShrinkingScreenIsSurvived) {
    const std::string whole = screen.mode();
    screen.run({"xrandr", "--newmode", "small", "30", "240", "248", "260", "280", "180", "190",
                "192", "200"});
    screen.run({"xrandr", "--addmode", screen.output(), "small"});
    deleteMonitor();
    setMonitor("400/10x300/10+0+0");
    StreamProbe stream(id, 400, 300, 0.01);
    ASSERT_EQ(stream.start(), kCGErrorSuccess);
    ASSERT_TRUE(stream.waitForCount(complete, 1));
    screen.run({"xrandr", "--output", screen.output(), "--mode", "small"});
    // Beyond the smaller root window there is nothing any more.
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
    ASSERT_EQ(stream.start(), kCGErrorSuccess);
    ASSERT_TRUE(stream.waitForCount(complete, 1));
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
    ASSERT_EQ(stream.start(), kCGErrorSuccess);
    ASSERT_TRUE(stream.waitForCount(complete, 1));
    screen.run({"xrandr", "--setmonitor", "other", "50/10x50/10+0+0", "none"});
    screen.run({"xrandr", "--delmonitor", "other"});
    EXPECT_FALSE(stream.waitForCalls(2, 300ms));
}

TEST_F(MonitorChange, ManyChangesLeaveNothingBehind) {
    StreamProbe stream(id, 100, 80);
    ASSERT_EQ(stream.start(), kCGErrorSuccess);
    ASSERT_TRUE(stream.waitForCount(complete, 1));
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
    // Fewer than one a round; a sanitizer maps some for itself as time goes by.
    EXPECT_LT(test::mappings(), mappings + rounds / 2);
}
