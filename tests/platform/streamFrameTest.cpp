// The contents of a stream's frames.
#include "tests/platform/streamProbe.h"
#include "tests/support/virtualScreen.h"

#include <atomic>
#include <chrono>
#include <gtest/gtest.h>

using test::PictureScreen;
using test::StreamProbe;
using test::UsedScreen;

TEST(StreamFrame, FirstOneComesWithoutAnyChangeAndIsExact) {
    const PictureScreen screen(1365, 767);
    StreamProbe stream(test::onlyDisplay(), 1365, 767, 0.03);
    ASSERT_TRUE(stream.startAndWait());
    EXPECT_EQ(stream.calls()[0].status, kCGDisplayStreamFrameStatusFrameComplete);
    EXPECT_TRUE(stream.calls()[0].hasSurface);
    EXPECT_TRUE(stream.latestFrame() == screen.picture);
}

TEST(StreamFrame, BandsOfChangeLandInPlace) {
    PictureScreen screen(333, 211);
    StreamProbe stream(test::onlyDisplay(), 333, 211);
    ASSERT_TRUE(stream.startAndWait());
    // First row, last row, corners, one pixel, and overlapping ones.
    const int rects[][4] = {{0, 0, 333, 1},    {0, 210, 333, 1},  {332, 210, 1, 1}, {7, 90, 1, 1},
                            {100, 50, 64, 64}, {120, 60, 64, 64}, {0, 0, 333, 211}, {5, 5, 9, 200}};
    std::uint32_t colour = 0x0a0b0c;
    for (const auto &rect : rects) {
        colour += 0x111111;
        screen.paint(rect[0], rect[1], rect[2], rect[3], colour);
        EXPECT_TRUE(stream.waitForFrame(screen.picture)) << rect[0] << "," << rect[1];
    }
}

TEST(StreamFrame, OnlyRowsThatChangedAreReadExceptOnceASecond) {
    UsedScreen screen(64, 48);
    screen.fill(0);
    // A mark that the handler writes into the surface stays in rows that are not read again.
    static dispatch_queue_t queue = dispatch_queue_create("queue", nullptr);
    static std::atomic<int> frames;
    static std::atomic<int> markIntact;
    CGDisplayStreamRef stream = CGDisplayStreamCreateWithDispatchQueue(
        test::onlyDisplay(), 64, 48, 0x42475241, nullptr, queue,
        ^(CGDisplayStreamFrameStatus, std::uint64_t, IOSurfaceRef surface,
          CGDisplayStreamUpdateRef) {
          if (surface == nullptr)
              return;
          auto *mark = static_cast<std::uint8_t *>(IOSurfaceGetBaseAddress(surface));
          markIntact = *mark == 0x5a ? 1 : 0;
          *mark = 0x5a;
          ++frames;
          frames.notify_all();
        });
    const auto begin = std::chrono::steady_clock::now();
    ASSERT_EQ(CGDisplayStreamStart(stream), kCGErrorSuccess);
    frames.wait(0);
    EXPECT_EQ(markIntact, 0);
    int untouched = 0;
    // The whole screen is read again about a second later, with the next change.
    do {
        const int seen = frames;
        screen.fillRect(10, 1, 5, 5, static_cast<std::uint32_t>(seen));
        frames.wait(seen);
        untouched += markIntact;
    } while (markIntact == 1);
    const auto taken = std::chrono::steady_clock::now() - begin;
    EXPECT_GE(taken, std::chrono::milliseconds(900));
    EXPECT_LT(taken, std::chrono::milliseconds(3000));
    EXPECT_GT(untouched, 10);
    EXPECT_EQ(CGDisplayStreamStop(stream), kCGErrorSuccess);
    CFRelease(stream);
}

TEST(StreamFrame, ShowsAMonitorsPartOfTheScreenAndNothingElse) {
    PictureScreen screen(300, 200);
    StreamProbe stream(test::addMonitor(screen, "101/10x77/10+33+55"), 101, 77);
    ASSERT_TRUE(stream.startAndWait());
    EXPECT_TRUE(stream.latestFrame() == screen.part(33, 55, 101, 77));

    // Drawing outside the monitor causes no frame, even after more than a second.
    for (int i = 0; i < 25; ++i) {
        screen.fillRect(0, 0, 33, 200, static_cast<std::uint32_t>(i));
        EXPECT_FALSE(stream.waitForCalls(2, std::chrono::milliseconds(60)));
    }
    screen.fillRect(33, 55, 1, 1, 0xfedcba);
    EXPECT_TRUE(stream.waitForPixel(0, 0, 0xfedcba));
    screen.fillRect(33 + 100, 55 + 76, 50, 50, 0xabcdef);
    EXPECT_TRUE(stream.waitForPixel(100, 76, 0xabcdef));
    EXPECT_EQ(stream.latestFrame().at(99, 76), screen.picture.at(132, 131));
}

TEST(StreamFrame, BeyondTheRootWindowIsBlack) {
    PictureScreen screen(300, 200);
    StreamProbe stream(test::addMonitor(screen, "120/10x90/10+250+150"), 120, 90);
    ASSERT_TRUE(stream.startAndWait());
    screen.paint(260, 160, 5, 5, 0x654321);
    EXPECT_TRUE(stream.waitForFrame(screen.part(250, 150, 120, 90)));
}

TEST(StreamFrame, OfAnotherSizeThanTheMonitorIsScaled) {
    const PictureScreen screen(200, 100);
    for (const auto &[width, height] :
         {std::pair(100, 50), std::pair(400, 200), std::pair(77, 133)}) {
        StreamProbe stream(test::onlyDisplay(), width, height);
        ASSERT_TRUE(stream.startAndWait());
        EXPECT_TRUE(stream.latestFrame() == screen.part(0, 0, 200, 100, width, height));
    }
}

TEST(StreamFrame, LastChangeBeforeAPauseIsAlwaysDelivered) {
    UsedScreen screen(160, 120);
    screen.fill(0);
    StreamProbe stream(test::onlyDisplay(), 160, 120, 0.02);
    ASSERT_TRUE(stream.startAndWait());
    std::uint32_t colour = 1;
    for (int burst = 0; burst < 60; ++burst) {
        // Bursts of changing length, so that their ends fall into every phase of the pacing.
        for (int i = 0; i <= burst * 3; ++i)
            screen.fillRect(burst, 3, 20, 20, ++colour);
        ASSERT_TRUE(stream.waitForPixel(burst + 5, 10, colour)) << burst;
    }
}
