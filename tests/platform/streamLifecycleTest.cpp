// Creating, starting and stopping streams.
#include "tests/platform/processUsage.h"
#include "tests/platform/streamProbe.h"
#include "tests/support/virtualScreen.h"

#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>

using test::StreamProbe;
using test::UsedScreen;
using namespace std::chrono_literals;

namespace {

constexpr std::int32_t bgra = 0x42475241;
constexpr auto complete = kCGDisplayStreamFrameStatusFrameComplete;
constexpr auto stopped = kCGDisplayStreamFrameStatusStopped;

} // namespace

TEST(StreamLifecycle, BadArgumentsAreRefused) {
    const UsedScreen screen(64, 48);
    const CGDirectDisplayID id = test::onlyDisplay();
    static dispatch_queue_t queue = dispatch_queue_create("queue", nullptr);
    const CGDisplayStreamFrameAvailableHandler handler =
        ^(CGDisplayStreamFrameStatus, std::uint64_t, IOSurfaceRef, CGDisplayStreamUpdateRef) {
        };
    const auto create = CGDisplayStreamCreateWithDispatchQueue;
    EXPECT_EQ(create(id + 1, 64, 48, bgra, nullptr, queue, handler), nullptr);
    EXPECT_EQ(create(id, 64, 48, 0x34323076, nullptr, queue, handler), nullptr);
    EXPECT_EQ(create(id, 64, 48, bgra, nullptr, nullptr, handler), nullptr);
    EXPECT_EQ(create(id, 64, 48, bgra, nullptr, queue, nullptr), nullptr);
    EXPECT_EQ(create(id, 0, 48, bgra, nullptr, queue, handler), nullptr);
    EXPECT_EQ(create(id, 64, 0, bgra, nullptr, queue, handler), nullptr);
    EXPECT_EQ(create(id, std::size_t{1} << 40, std::size_t{1} << 40, bgra, nullptr, queue, handler),
              nullptr);
    // The options may be left out.
    CGDisplayStreamRef stream = create(id, 64, 48, bgra, nullptr, queue, handler);
    EXPECT_NE(stream, nullptr);
    CFRelease(stream);
}

TEST(StreamLifecycle, WithoutAServerOrDamageThereIsNoStream) {
    unsetenv("DISPLAY");
    EXPECT_EQ(StreamProbe(1438993425, 64, 48).get(), nullptr);
    for (const char *extension : {"DAMAGE", "RANDR", "XFIXES"}) {
        const UsedScreen screen(64, 48, 24, {"-extension", extension});
        EXPECT_EQ(StreamProbe(1438993425, 64, 48).get(), nullptr) << extension;
    }
}

TEST(StreamLifecycle, StartAndStopOutOfTurnAreErrors) {
    const UsedScreen screen(64, 48);
    EXPECT_NE(CGDisplayStreamStart(nullptr), kCGErrorSuccess);
    EXPECT_NE(CGDisplayStreamStop(nullptr), kCGErrorSuccess);
    StreamProbe stream(test::onlyDisplay(), 64, 48);
    EXPECT_NE(stream.stop(), kCGErrorSuccess);
    EXPECT_EQ(stream.start(), kCGErrorSuccess);
    EXPECT_NE(stream.start(), kCGErrorSuccess);
    EXPECT_EQ(stream.stop(), kCGErrorSuccess);
    EXPECT_NE(stream.stop(), kCGErrorSuccess);
}

TEST(StreamLifecycle, StartOfALostDisplayIsAnError) {
    UsedScreen screen(64, 48);
    StreamProbe stream(test::addMonitor(screen, "20/10x10/10+0+0", "extra"), 20, 10);
    ASSERT_NE(stream.get(), nullptr);
    screen.run({"xrandr", "--delmonitor", "extra"});
    EXPECT_NE(stream.start(), kCGErrorSuccess);
    test::addMonitor(screen, "20/10x10/10+0+0", "extra");
    EXPECT_EQ(stream.start(), kCGErrorSuccess);
    EXPECT_EQ(stream.stop(), kCGErrorSuccess);
    screen.kill();
    EXPECT_NE(stream.start(), kCGErrorSuccess);
    EXPECT_NE(stream.stop(), kCGErrorSuccess);
}

TEST(StreamLifecycle, StoppedIsTheLastCallAndComesBeforeTheStopReturns) {
    UsedScreen screen(64, 48);
    StreamProbe stream(test::onlyDisplay(), 64, 48);
    for (std::size_t round = 1; round <= 20; ++round) {
        ASSERT_EQ(stream.start(), kCGErrorSuccess);
        ASSERT_TRUE(stream.waitForCount(complete, round));
        ASSERT_EQ(stream.stop(), kCGErrorSuccess);
        const auto calls = stream.calls();
        ASSERT_EQ(stream.count(stopped), round);
        EXPECT_EQ(calls.back().status, stopped);
        EXPECT_FALSE(calls.back().hasSurface);
    }
    const std::size_t before = stream.calls().size();
    screen.fill(0x777777);
    EXPECT_FALSE(stream.waitForCalls(before + 1, 100ms));
}

TEST(StreamLifecycle, TheHandlerRunsOnAThreadOfItsOwn) {
    UsedScreen screen(64, 48);
    const std::size_t threadsBefore = test::threads();
    StreamProbe stream(test::onlyDisplay(), 64, 48);
    EXPECT_TRUE(test::threadsBecome(threadsBefore));
    ASSERT_EQ(stream.start(), kCGErrorSuccess);
    // The capture thread and the queue's thread.
    EXPECT_TRUE(test::threadsBecome(threadsBefore + 2));
    ASSERT_TRUE(stream.waitForCalls(1));
    screen.fill(0x010101);
    ASSERT_TRUE(stream.waitForCalls(2));
    ASSERT_EQ(stream.stop(), kCGErrorSuccess);
    EXPECT_TRUE(test::threadsBecome(threadsBefore));
    const auto calls = stream.calls();
    for (const auto &call : calls) {
        EXPECT_NE(call.thread, std::this_thread::get_id());
        EXPECT_EQ(call.thread, calls[0].thread);
    }
}

TEST(StreamLifecycle, ManyRoundsLeaveNothingBehind) {
    const UsedScreen screen(64, 48);
    const CGDirectDisplayID id = test::onlyDisplay();
    { // Resources that the first round allocates for good are not counted.
        StreamProbe stream(id, 64, 48);
        ASSERT_EQ(stream.start(), kCGErrorSuccess);
        ASSERT_EQ(stream.stop(), kCGErrorSuccess);
    }
    const std::size_t descriptors = test::openDescriptors();
    const std::size_t threads = test::threads();
    const std::size_t segments = test::systemSharedSegments();
    const std::size_t mappings = test::mappings();
    // Keeps the streams, like a host that never releases one.
    std::vector<std::unique_ptr<StreamProbe>> streams;
    for (int round = 0; round < 1000; ++round) {
        streams.push_back(std::make_unique<StreamProbe>(id, 64, 48));
        ASSERT_EQ(streams.back()->start(), kCGErrorSuccess) << round;
        ASSERT_EQ(streams.back()->stop(), kCGErrorSuccess) << round;
    }
    EXPECT_TRUE(test::openDescriptorsBecome(descriptors));
    EXPECT_TRUE(test::threadsBecome(threads));
    EXPECT_EQ(test::systemSharedSegments(), segments);
    EXPECT_LT(test::mappings(), mappings + 100);
}

TEST(StreamLifecycle, StopFromTheQueueReturnsAndStoppedFollows) {
    const UsedScreen screen(64, 48);
    const std::size_t descriptors = test::openDescriptors();
    const std::size_t threads = test::threads();
    StreamProbe stream(test::onlyDisplay(), 64, 48);
    CGError result = kCGErrorFailure;
    stream.onCall = [&](const test::HandlerCall &call) {
        if (call.status == complete)
            result = stream.stop();
    };
    ASSERT_EQ(stream.start(), kCGErrorSuccess);
    ASSERT_TRUE(stream.waitForCount(stopped, 1));
    EXPECT_EQ(result, kCGErrorSuccess);
    EXPECT_NE(stream.stop(), kCGErrorSuccess);
    EXPECT_EQ(stream.start(), kCGErrorSuccess);
    ASSERT_TRUE(stream.waitForCount(stopped, 2));
    // The queue's thread releases the rest later.
    EXPECT_TRUE(test::threadsBecome(threads));
    EXPECT_TRUE(test::openDescriptorsBecome(descriptors));
}

TEST(StreamLifecycle, AHangingHandlerDoesNotHangTheStop) {
    UsedScreen screen(64, 48);
    std::atomic<bool> goOn = false;
    std::atomic<bool> wentOn = false;
    StreamProbe stream(test::onlyDisplay(), 64, 48);
    stream.onCall = [&](const test::HandlerCall &) {
        goOn.wait(false);
        wentOn = true;
        wentOn.notify_all();
    };
    const std::size_t threads = test::threads();
    ASSERT_TRUE(stream.startAndWait());
    const auto before = platform::Clock::now();
    EXPECT_NE(stream.stop(), kCGErrorSuccess);
    const auto taken = platform::Clock::now() - before;
    EXPECT_GE(taken, 500ms);
    EXPECT_LT(taken, 3s);
    // The hanging handler's resources still exist when it continues; then they are released, and
    // the handler is not called again.
    goOn = true;
    goOn.notify_all();
    wentOn.wait(false);
    EXPECT_TRUE(test::threadsBecome(threads));
    EXPECT_EQ(stream.calls().size(), 1u);
}

TEST(StreamLifecycle, TwoStreamsRunSideBySide) {
    UsedScreen screen(64, 48);
    screen.fill(0);
    StreamProbe first(test::onlyDisplay(), 64, 48);
    StreamProbe second(test::onlyDisplay(), 32, 24);
    ASSERT_EQ(first.start(), kCGErrorSuccess);
    ASSERT_EQ(second.start(), kCGErrorSuccess);
    screen.fill(0x334455);
    EXPECT_TRUE(first.waitForPixel(5, 5, 0x334455));
    EXPECT_TRUE(second.waitForPixel(5, 5, 0x334455));
    EXPECT_EQ(first.stop(), kCGErrorSuccess);
    screen.fill(0x556677);
    EXPECT_TRUE(second.waitForPixel(5, 5, 0x556677));
}
