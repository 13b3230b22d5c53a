// The timing of the handler's calls, and their cost.
#include "tests/platform/processUsage.h"
#include "tests/platform/streamProbe.h"
#include "tests/support/virtualScreen.h"

#include <atomic>
#include <gtest/gtest.h>

using test::StreamProbe;
using test::UsedScreen;
using namespace std::chrono_literals;

TEST(StreamPace, MinimumFrameTimeIsKeptUnderConstantDrawing) {
    UsedScreen screen(320, 200);
    StreamProbe stream(test::onlyDisplay(), 320, 200, 0.03);
    ASSERT_EQ(stream.start(), kCGErrorSuccess);
    const auto begin = platform::Clock::now();
    std::uint32_t colour = 0;
    while (stream.calls().size() < 40 && platform::Clock::now() < begin + 20s)
        screen.fill(++colour);
    const auto calls = stream.calls();
    const double seconds = std::chrono::duration<double>(platform::Clock::now() - begin).count();
    ASSERT_GE(calls.size(), 40u);
    EXPECT_LE(static_cast<double>(calls.size()), seconds / 0.03 + 2);
    for (std::size_t i = 1; i < calls.size(); ++i)
        EXPECT_GE(calls[i].displayTime - calls[i - 1].displayTime, 30'000'000u) << i;
    EXPECT_GT(screen.changes(), static_cast<int>(calls.size()))
        << "the screen did not change faster than the stream may go";
}

TEST(StreamPace, AfterAPauseAFrameGoesOutAtOnce) {
    UsedScreen screen(320, 200);
    StreamProbe stream(test::onlyDisplay(), 320, 200, 1.0);
    ASSERT_TRUE(stream.startAndWait());
    EXPECT_FALSE(stream.waitForCalls(2, 1100ms));
    const auto before = platform::Clock::now();
    screen.fill(0x112233);
    ASSERT_TRUE(stream.waitForCalls(2));
    // A wait for the next multiple of the frame time would take nearly a second.
    EXPECT_LT(platform::Clock::now() - before, 800ms);
    EXPECT_EQ(stream.latestFrame().at(1, 1), 0x112233u);
}

TEST(StreamPace, AStillScreenIsNotTouchedAtAll) {
    UsedScreen screen(1920, 1080);
    screen.fill(0x223344);
    const std::set<int> others = test::threadIds();
    StreamProbe stream(test::onlyDisplay(), 1920, 1080, 0.03);
    ASSERT_EQ(stream.start(), kCGErrorSuccess);
    const std::set<int> ours = test::threadIds(others);
    ASSERT_EQ(ours.size(), 2u);
    ASSERT_TRUE(stream.waitForCalls(1));
    // A second after a change the stream checks once more and finds none; the handler is not
    // called.
    ASSERT_TRUE(test::comeToRest(ours));
    const long long runTime = test::runTimeOf(ours);
    EXPECT_FALSE(stream.waitForCalls(2, 3000ms));
    EXPECT_EQ(test::runTimeOf(ours), runTime);

    screen.fillRect(1919, 1079, 1, 1, 0x445566);
    EXPECT_TRUE(stream.waitForPixel(1919, 1079, 0x445566));
}

TEST(StreamPace, FramesDoNotPileUpBehindASlowHandler) {
    UsedScreen screen(64, 48);
    screen.fill(0);
    std::atomic<bool> drawn = false;
    StreamProbe stream(test::onlyDisplay(), 64, 48);
    stream.onCall = [&](const test::HandlerCall &) { drawn.wait(false); };
    ASSERT_TRUE(stream.startAndWait());
    std::uint32_t colour = 0;
    for (int i = 0; i < 300; ++i)
        screen.fill(++colour);
    EXPECT_EQ(stream.calls().size(), 1u);
    // Meanwhile the stream does not touch the frame of the hanging handler.
    drawn = true;
    drawn.notify_all();
    ASSERT_TRUE(stream.waitForCalls(2));
    // No frames in between: the next frame is already the newest.
    EXPECT_EQ(stream.latestFrame().at(10, 10), colour);
    EXPECT_FALSE(stream.waitForCalls(3, 200ms));
}
