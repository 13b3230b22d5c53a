#include "mirror/frameLease.h"
#include "tests/mirror/manager.h"

#include <atomic>
#include <cstring>
#include <future>
#include <thread>

namespace {

class Capture : public ManagerTest {
protected:
    static constexpr std::size_t pixels = 64 * 48;

    static std::vector<std::uint32_t> screenOf(std::uint32_t word) {
        return std::vector<std::uint32_t>(pixels, word);
    }

    static void deliver(const std::vector<std::uint32_t> &screen) {
        fake::deliver(kCGDisplayStreamFrameStatusFrameComplete, &screen);
    }

    static bool bufferIs(const std::vector<std::uint32_t> &words) {
        return std::memcmp(mirrorManager.frameBuffer, words.data(), words.size() * 4) == 0;
    }
};

TEST_F(Capture, CompleteFrameIsCopiedUnderAReadOnlyLock) {
    ASSERT_EQ(setDevices({}), 1);
    std::vector<std::uint32_t> screen = screenOf(0);
    for (std::size_t i = 0; i < screen.size(); ++i)
        screen[i] = static_cast<std::uint32_t>(i * 2654435761u);
    fake::platform().calls.clear();
    deliver(screen);
    EXPECT_TRUE(bufferIs(screen));
    EXPECT_EQ(fake::platform().calls,
              (std::vector<std::string>{"IOSurfaceLock", "IOSurfaceUnlock"}));
}

TEST_F(Capture, OtherNotificationsChangeNothing) {
    ASSERT_EQ(setDevices({}), 1);
    const auto kept = screenOf(0x11223344), other = screenOf(0x55667788);
    deliver(kept);
    for (const int status : std::initializer_list<int>{kCGDisplayStreamFrameStatusFrameIdle,
                                                       kCGDisplayStreamFrameStatusFrameBlank,
                                                       kCGDisplayStreamFrameStatusStopped, -1, 4}) {
        fake::deliver(status, &other);
        fake::deliver(status, nullptr);
    }
    fake::deliver(kCGDisplayStreamFrameStatusFrameComplete, nullptr);
    EXPECT_TRUE(bufferIs(kept));
}

TEST_F(Capture, WithoutABufferNothingIsCopied) {
    ASSERT_EQ(setDevices({}), 1);
    mirrorManager.deInitScreen();
    EXPECT_EQ(mirrorManager.frameBuffer, nullptr);
    deliver(screenOf(1));
    EXPECT_EQ(mirrorManager.frameBuffer, nullptr);
    mirrorManager.deInitScreen();
}

TEST_F(Capture, InitScreenMeasuresAndAllocates) {
    mirrorManager.displayID = 1;
    EXPECT_EQ(mirrorManager.initScreen(), mirrorManager.frameBuffer);
    EXPECT_EQ(mirrorManager.screenWidth, 64u);
    EXPECT_EQ(mirrorManager.screenHeight, 48u);
    EXPECT_EQ(mirrorManager.bytesPerPixel, 4u);
    EXPECT_TRUE(bufferIs(screenOf(0)));
}

TEST_F(Capture, GrabScreenCopiesOnce) {
    mirrorManager.displayID = 1;
    mirrorManager.initScreen();
    fake::platform().imageBytes.resize(64 * 48 * 4);
    for (std::size_t i = 0; i < fake::platform().imageBytes.size(); ++i)
        fake::platform().imageBytes[i] = static_cast<std::uint8_t>(i * 31);
    mirrorManager.grabScreen();
    EXPECT_EQ(std::memcmp(mirrorManager.frameBuffer, fake::platform().imageBytes.data(),
                          fake::platform().imageBytes.size()),
              0);
    EXPECT_EQ(fake::platform().imagesAlive, 0);

    fake::platform().displays.clear();
    mirrorManager.grabScreen(); // the display is gone: the last frame is kept
    EXPECT_EQ(mirrorManager.frameBuffer[1], 31);
}

// A run that failed leaves its stream running; the next configuration may be for a larger display.
TEST_F(Capture, FramesOfAnEarlierConfigurationsSizeAreNotTaken) {
    ASSERT_EQ(setDevices({}), 1);
    mirrorManager.deInitScreen();
    mirrorManager.screenWidth = 1000;
    mirrorManager.frameBuffer = new unsigned char[1000 * 48 * 4]();
    deliver(screenOf(0xffffffff));
    EXPECT_EQ(mirrorManager.grabPixel(5).r, 0);
}

// The buffer and the stream have four bytes per pixel, even if the display's images have more.
TEST_F(Capture, DeepDisplaysFitTheBuffer) {
    fake::platform().displays = {{1, 64, 48, 64}};
    ASSERT_EQ(setDevices({}), 1);
    EXPECT_EQ(mirrorManager.bytesPerPixel, 8u);
    const auto screen = screenOf(0x010203);
    deliver(screen);
    EXPECT_TRUE(bufferIs(screen));
}

// A copy uses the bytes per pixel of the display's images.
TEST_F(Capture, ADisplayOf16BitsFillsHalfTheBuffer) {
    const auto expectHalfFilled = [] {
        for (std::size_t i = 0; i < pixels * 4; ++i)
            ASSERT_EQ(mirrorManager.frameBuffer[i], i < pixels * 2 ? 0xab : 0) << i;
    };
    fake::platform().displays = {{1, 64, 48, 16}};
    ASSERT_EQ(setDevices({}), 1);
    EXPECT_EQ(mirrorManager.bytesPerPixel, 2u);
    deliver(screenOf(0xabababab));
    expectHalfFilled();

    mirrorManager.deInitScreen();
    mirrorManager.initScreen();
    fake::platform().imageBytes.assign(pixels * 4, 0xab);
    mirrorManager.grabScreen();
    expectHalfFilled();
}

// A run may end by itself, and free its buffer, while the host asks for a palette.
TEST_F(Capture, ABufferThatIsBeingReadIsNotFreed) {
    mirrorManager.displayID = 1;
    mirrorManager.initScreen();
    const unsigned char *buffer = mirrorManager.frameBuffer;
    {
        const FrameLease lease;
        mirrorManager.deInitScreen(); // gives up waiting, and leaves the buffer to its reader
        EXPECT_EQ(mirrorManager.frameBuffer, nullptr);
        EXPECT_EQ(buffer[5], 0);
    }
    delete[] buffer;

    mirrorManager.initScreen();
    std::promise<void> reading;
    std::atomic<bool> done = false;
    std::thread reader([&] {
        const FrameLease lease;
        reading.set_value();
        EXPECT_EQ(mirrorManager.currentFrame().word(3), 0u);
        done = true;
    });
    reading.get_future().wait();
    mirrorManager.deInitScreen();
    EXPECT_TRUE(done);
    reader.join();
}

// The sample grid may still be that of an earlier, larger screen.
TEST_F(Capture, SamplesOfALargerScreenReadAsBlack) {
    fake::reset(1000, 800);
    ASSERT_EQ(setDevices({}), 1);
    mirrorManager.setScreenSamplePixels();
    mirrorManager.deInitScreen();
    fake::reset(4, 4);
    ASSERT_EQ(setDevices({}), 1);
    char text[512];
    EXPECT_EQ(mirrorManager.getPalette(text), 0);
    EXPECT_STREQ(text, R"({"palette":[{"R":0,"G":0,"B":0}]})");
}

} // namespace
