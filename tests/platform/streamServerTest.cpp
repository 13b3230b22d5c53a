// Servers that lack something, go away or hang.
#include "tests/platform/processUsage.h"
#include "tests/platform/streamProbe.h"
#include "tests/support/virtualScreen.h"

#include <csignal>
#include <gtest/gtest.h>

using test::Frame;
using test::PictureScreen;
using test::StreamProbe;
using test::UsedScreen;
using namespace std::chrono_literals;

namespace {

constexpr auto complete = kCGDisplayStreamFrameStatusFrameComplete;
constexpr auto stopped = kCGDisplayStreamFrameStatusStopped;

class StreamDepth : public testing::TestWithParam<int> {};

} // namespace

TEST(StreamServer, WithoutSharedMemoryFramesAreTheSame) {
    PictureScreen screen(1365, 767, {"-extension", "MIT-SHM"});
    StreamProbe stream(test::onlyDisplay(), 1365, 767, 0.01);
    ASSERT_TRUE(stream.startAndWait());
    EXPECT_TRUE(stream.latestFrame() == screen.picture);
    screen.paint(1300, 700, 30, 30, 0x5566aa);
    EXPECT_TRUE(stream.waitForFrame(screen.picture));
    EXPECT_EQ(stream.stop(), kCGErrorSuccess);
}

TEST_P(StreamDepth, ShowsTheRightColours) {
    UsedScreen screen(61, 40, GetParam());
    StreamProbe stream(test::onlyDisplay(), 61, 40);
    ASSERT_EQ(stream.start(), kCGErrorSuccess);
    for (const std::uint32_t colour :
         {0xff0000u, 0x00ff00u, 0x0000ffu, 0xffffffu, 0x000000u, 0x84c642u, 0x104a8cu}) {
        screen.fillRect(0, 13, 61, 20, colour);
        EXPECT_TRUE(stream.waitForFrame([&](const Frame &frame) {
            for (const int shift : {0, 8, 16}) {
                const int difference = static_cast<int>(frame.at(60, 20) >> shift & 0xff) -
                                       static_cast<int>(colour >> shift & 0xff);
                if (difference < -4 || difference > 4)
                    return false;
            }
            return true;
        })) << std::hex
            << colour << " became " << stream.latestFrame().at(60, 20);
    }
}

INSTANTIATE_TEST_SUITE_P(StreamServer, StreamDepth, testing::Values(15, 16, 24, 30));

TEST(StreamServer, APaletteScreenIsRefused) {
    const UsedScreen screen(64, 48, 8);
    EXPECT_EQ(StreamProbe(test::onlyDisplay(), 64, 48).get(), nullptr);
}

TEST(StreamServer, GoneInMidRunEndsNothingButTheFrames) {
    signal(SIGPIPE, SIG_DFL);
    UsedScreen screen(320, 200);
    StreamProbe stream(test::onlyDisplay(), 320, 200, 0.03);
    const std::size_t descriptors = test::openDescriptors();
    const std::set<int> others = test::threadIds();
    const std::size_t threads = others.size();
    ASSERT_TRUE(stream.startAndWait());
    screen.kill();
    // The capture thread notices this and ends; the remaining thread does not spin.
    EXPECT_TRUE(test::threadsBecome(threads + 1));
    EXPECT_TRUE(test::comeToRest(test::threadIds(others)));
    EXPECT_EQ(stream.count(complete), 1u);

    const auto before = platform::Clock::now();
    EXPECT_EQ(stream.stop(), kCGErrorSuccess);
    EXPECT_LT(platform::Clock::now() - before, platform::serverPatience);
    EXPECT_EQ(stream.count(stopped), 1u);
    EXPECT_NE(stream.start(), kCGErrorSuccess);
    EXPECT_TRUE(test::threadsBecome(threads));
    EXPECT_LE(test::openDescriptors(), descriptors);
}

TEST(StreamServer, GoneUnderConstantDrawingDoesNotRaiseSigpipe) {
    signal(SIGPIPE, SIG_DFL);
    for (int round = 0; round < 10; ++round) {
        UsedScreen screen(320, 200);
        StreamProbe stream(test::onlyDisplay(), 320, 200);
        ASSERT_EQ(stream.start(), kCGErrorSuccess);
        for (std::uint32_t i = 0; i < 50; ++i)
            screen.fill(i);
        screen.kill();
        EXPECT_EQ(stream.stop(), kCGErrorSuccess);
        EXPECT_EQ(stream.calls().back().status, stopped);
    }
}

TEST(StreamServer, HungInMidRunTheStopIsBounded) {
    UsedScreen screen(320, 200);
    StreamProbe stream(test::onlyDisplay(), 320, 200, 0.03);
    const std::size_t threads = test::threads();
    ASSERT_TRUE(stream.startAndWait());
    kill(screen.pid(), SIGSTOP);
    const auto before = platform::Clock::now();
    EXPECT_EQ(stream.stop(), kCGErrorSuccess);
    EXPECT_LT(platform::Clock::now() - before, 3s);
    EXPECT_EQ(stream.calls().back().status, stopped);
    EXPECT_TRUE(test::threadsBecome(threads));

    const auto beforeStart = platform::Clock::now();
    EXPECT_NE(stream.start(), kCGErrorSuccess);
    EXPECT_LT(platform::Clock::now() - beforeStart, 5s);
    EXPECT_TRUE(test::threadsBecome(threads));
}

TEST(StreamServer, HungWhileAReadIsUnderWayTheStopIsBounded) {
    for (const std::vector<std::string> &arguments :
         {std::vector<std::string>{}, {"-extension", "MIT-SHM"}}) {
        UsedScreen screen(1920, 1080, 24, arguments);
        StreamProbe stream(test::onlyDisplay(), 1920, 1080);
        // The screen changes after the handler's frame. The capture requests the next frame as soon
        // as the handler returns, but by then the server hangs.
        stream.onCall = [&](const test::HandlerCall &call) {
            if (call.status != complete || stream.count(complete) > 1)
                return;
            screen.fill(0xffffff);
            kill(screen.pid(), SIGSTOP);
        };
        ASSERT_TRUE(stream.startAndWait());
        EXPECT_FALSE(stream.waitForCount(complete, 2, 300ms));
        const auto before = platform::Clock::now();
        EXPECT_EQ(stream.stop(), kCGErrorSuccess);
        EXPECT_LT(platform::Clock::now() - before, 3s);
        EXPECT_EQ(stream.calls().back().status, stopped);
    }
}

TEST(StreamServer, HungForAWhileFramesGoOnAfterwards) {
    UsedScreen screen(320, 200);
    StreamProbe stream(test::onlyDisplay(), 320, 200);
    stream.onCall = [&](const test::HandlerCall &) {
        if (stream.count(complete) == 1) {
            screen.fill(0xffffff);
            kill(screen.pid(), SIGSTOP);
        }
    };
    ASSERT_TRUE(stream.startAndWait());
    EXPECT_FALSE(stream.waitForCount(complete, 2, 2500ms));
    kill(screen.pid(), SIGCONT);
    EXPECT_TRUE(stream.waitForPixel(10, 10, 0xffffff));
    screen.fill(0x808080);
    EXPECT_TRUE(stream.waitForPixel(10, 10, 0x808080));
}
