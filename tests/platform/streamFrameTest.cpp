// What the frames of a stream show.
#include "tests/platform/streamProbe.h"
#include "tests/support/virtualScreen.h"

#include <atomic>
#include <chrono>
#include <gtest/gtest.h>

using test::Frame;
using test::StreamProbe;
using test::VirtualScreen;

namespace {

// The screen's true content, kept beside the drawing.
struct Canvas {
    VirtualScreen &screen;
    int width;
    int height;
    std::vector<std::uint32_t> pixels;

    void rect(int x, int y, int w, int h, std::uint32_t colour) {
        screen.fillRect(x, y, w, h, colour);
        for (int row = y; row < y + h; ++row)
            for (int column = x; column < x + w; ++column)
                pixels[static_cast<std::size_t>(row * width + column)] = colour;
    }
};

} // namespace

TEST(StreamFrame, FirstOneComesWithoutAnyChangeAndIsExact) {
    VirtualScreen screen(1365, 767);
    screen.use();
    const auto picture = test::noise(1365, 767, 5);
    screen.putPixels(0, 0, 1365, 767, picture.data());
    StreamProbe stream(test::onlyDisplay(), 1365, 767, 0.03);
    ASSERT_EQ(stream.start(), kCGErrorSuccess);
    ASSERT_TRUE(stream.waitForCalls(1));
    EXPECT_EQ(stream.calls()[0].status, kCGDisplayStreamFrameStatusFrameComplete);
    EXPECT_TRUE(stream.calls()[0].hasSurface);
    EXPECT_EQ(stream.latestFrame().pixels, picture);
}

TEST(StreamFrame, BandsOfChangeLandInPlace) {
    VirtualScreen screen(333, 211);
    screen.use();
    Canvas canvas{screen, 333, 211, test::noise(333, 211, 6)};
    screen.putPixels(0, 0, 333, 211, canvas.pixels.data());
    StreamProbe stream(test::onlyDisplay(), 333, 211);
    ASSERT_EQ(stream.start(), kCGErrorSuccess);
    ASSERT_TRUE(stream.waitForCalls(1));
    // First row, last row, corners, one pixel, and overlapping ones.
    const int rects[][4] = {{0, 0, 333, 1},    {0, 210, 333, 1},  {332, 210, 1, 1}, {7, 90, 1, 1},
                            {100, 50, 64, 64}, {120, 60, 64, 64}, {0, 0, 333, 211}, {5, 5, 9, 200}};
    std::uint32_t colour = 0x0a0b0c;
    for (const auto &rect : rects) {
        colour += 0x111111;
        canvas.rect(rect[0], rect[1], rect[2], rect[3], colour);
        EXPECT_TRUE(stream.waitForFrame([&](const Frame &frame) {
            return frame.pixels == canvas.pixels;
        })) << rect[0]
            << "," << rect[1];
    }
}

TEST(StreamFrame, OnlyRowsThatChangedAreReadExceptOnceASecond) {
    VirtualScreen screen(64, 48);
    screen.use();
    screen.fill(0);
    // A mark that the handler leaves in the surface stays in rows that nobody reads anew.
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
    ASSERT_EQ(CGDisplayStreamStart(stream), kCGErrorSuccess);
    frames.wait(0);
    EXPECT_EQ(markIntact, 0);
    const auto begin = std::chrono::steady_clock::now();
    int untouched = 0;
    // The whole is read again about a second later, with whatever changes then.
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
    VirtualScreen screen(300, 200);
    screen.use();
    const auto picture = test::noise(300, 200, 7);
    screen.putPixels(0, 0, 300, 200, picture.data());
    screen.run({"xrandr", "--setmonitor", "part", "101/10x77/10+33+55", "none"});
    CGDirectDisplayID ids[2] = {};
    std::uint32_t count = 0;
    CGGetActiveDisplayList(2, ids, &count);
    StreamProbe stream(ids[0], 101, 77);
    ASSERT_EQ(stream.start(), kCGErrorSuccess);
    ASSERT_TRUE(stream.waitForCalls(1));
    const Frame frame = stream.latestFrame();
    for (int y = 0; y < 77; ++y)
        for (int x = 0; x < 101; ++x)
            ASSERT_EQ(frame.at(x, y), picture[static_cast<std::size_t>((55 + y) * 300 + 33 + x)]);

    // Drawing beside the monitor is none of its business, also after more than a second.
    for (int i = 0; i < 25; ++i) {
        screen.fillRect(0, 0, 33, 200, static_cast<std::uint32_t>(i));
        EXPECT_FALSE(stream.waitForCalls(2, std::chrono::milliseconds(60)));
    }
    screen.fillRect(33, 55, 1, 1, 0xfedcba);
    EXPECT_TRUE(stream.waitForPixel(0, 0, 0xfedcba));
    screen.fillRect(33 + 100, 55 + 76, 50, 50, 0xabcdef);
    EXPECT_TRUE(stream.waitForPixel(100, 76, 0xabcdef));
    EXPECT_EQ(stream.latestFrame().at(99, 76), picture[static_cast<std::size_t>(131 * 300 + 132)]);
}

TEST(StreamFrame, BeyondTheRootWindowIsBlack) {
    VirtualScreen screen(300, 200);
    screen.use();
    screen.fill(0x123456);
    screen.run({"xrandr", "--setmonitor", "part", "120/10x90/10+250+150", "none"});
    CGDirectDisplayID ids[2] = {};
    std::uint32_t count = 0;
    CGGetActiveDisplayList(2, ids, &count);
    StreamProbe stream(ids[0], 120, 90);
    ASSERT_EQ(stream.start(), kCGErrorSuccess);
    ASSERT_TRUE(stream.waitForCalls(1));
    screen.fillRect(260, 160, 5, 5, 0x654321);
    ASSERT_TRUE(stream.waitForPixel(10, 10, 0x654321));
    const Frame frame = stream.latestFrame();
    EXPECT_EQ(frame.at(0, 0), 0x123456u);
    EXPECT_EQ(frame.at(49, 49), 0x123456u);
    EXPECT_EQ(frame.at(50, 49), 0u);
    EXPECT_EQ(frame.at(49, 50), 0u);
    EXPECT_EQ(frame.at(119, 89), 0u);
}

TEST(StreamFrame, OfAnotherSizeThanTheMonitorIsScaled) {
    VirtualScreen screen(200, 100);
    screen.use();
    const auto picture = test::noise(200, 100, 8);
    screen.putPixels(0, 0, 200, 100, picture.data());
    for (const auto &[width, height] :
         {std::pair(100, 50), std::pair(400, 200), std::pair(77, 133)}) {
        StreamProbe stream(test::onlyDisplay(), width, height);
        ASSERT_EQ(stream.start(), kCGErrorSuccess);
        ASSERT_TRUE(stream.waitForCalls(1));
        const Frame frame = stream.latestFrame();
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                ASSERT_EQ(
                    frame.at(x, y),
                    picture[static_cast<std::size_t>(y * 100 / height * 200 + x * 200 / width)]);
    }
}

TEST(StreamFrame, LastChangeBeforeAPauseIsAlwaysDelivered) {
    VirtualScreen screen(160, 120);
    screen.use();
    screen.fill(0);
    StreamProbe stream(test::onlyDisplay(), 160, 120, 0.02);
    ASSERT_EQ(stream.start(), kCGErrorSuccess);
    ASSERT_TRUE(stream.waitForCalls(1));
    std::uint32_t colour = 1;
    for (int burst = 0; burst < 60; ++burst) {
        // Bursts of changing length, so that their ends fall into every phase of the pacing.
        for (int i = 0; i <= burst * 3; ++i)
            screen.fillRect(burst, 3, 20, 20, ++colour);
        ASSERT_TRUE(stream.waitForPixel(burst + 5, 10, colour)) << burst;
    }
}
