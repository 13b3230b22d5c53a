#include "mirror/sharedFlag.h"
#include "tests/mirror/manager.h"
#include "tests/support/lightReceiver.h"
#include "tests/support/noDescriptors.h"

#include <pthread.h>

namespace {

class Lifecycle : public ManagerTest {
protected:
    // Starts a run, waits until it has ended by itself and returns its output.
    static std::string run() {
        CaptureStdout();
        EXPECT_EQ(mirrorManager.startMirror(), 1);
        mirrorManager.mirrorThread.join();
        return GetCapturedStdout();
    }

    static bool called(const std::string &name) { return fake::callCount(name) > 0; }
};

TEST_F(Lifecycle, WithoutDevicesNothingStarts) {
    CaptureStdout();
    EXPECT_EQ(mirrorManager.startMirror(), 0);
    EXPECT_EQ(GetCapturedStdout(), "No devices.\n");
}

TEST_F(Lifecycle, StopWithoutARunIsQuiet) {
    CaptureStdout();
    EXPECT_EQ(mirrorManager.stopMirror(), 1);
    EXPECT_EQ(GetCapturedStdout(), "");
}

TEST_F(Lifecycle, SecondStartIsRefused) {
    ASSERT_EQ(setDevices({{"127.0.53.1", 1}}), 1);
    ASSERT_EQ(mirrorManager.startMirror(), 1);
    CaptureStdout();
    EXPECT_EQ(mirrorManager.startMirror(), 0);
    EXPECT_EQ(GetCapturedStdout(), "Mirroring already running.\n");
    EXPECT_EQ(mirrorManager.stopMirror(), 1);
    EXPECT_EQ(mirrorManager.startMirror(), 1);
    EXPECT_EQ(mirrorManager.stopMirror(), 1);
}

TEST_F(Lifecycle, ARunFreesTheBuffer) {
    ASSERT_EQ(setDevices({{"127.0.53.2", 1}}), 1);
    ASSERT_EQ(mirrorManager.startMirror(), 1);
    EXPECT_TRUE(readFlag(mirrorManager.running));
    ASSERT_EQ(mirrorManager.stopMirror(), 1);
    EXPECT_FALSE(mirrorManager.running);
    EXPECT_EQ(mirrorManager.frameBuffer, nullptr);
    EXPECT_FALSE(mirrorManager.mirrorThread.joinable());
}

TEST_F(Lifecycle, StopRightAfterStartDoesNotHang) {
    ASSERT_EQ(setDevices({{"127.0.53.3", 1}}), 1);
    mirrorManager.matchFrameDelay = 0;
    for (int round = 0; round < 1000; ++round) {
        ASSERT_EQ(mirrorManager.startMirror(), 1);
        ASSERT_EQ(mirrorManager.stopMirror(), 1);
    }
}

TEST_F(Lifecycle, ASecondRunWithoutConfigurationIsBlack) {
    test::LightReceiver light("127.0.53.4", 60221);
    ASSERT_EQ(setDevices({{"127.0.53.4", 1, {{9, 5, 5}}}}), 1);
    const std::vector<std::uint32_t> white(64 * 48, 0xffffff);
    fake::deliver(kCGDisplayStreamFrameStatusFrameComplete, &white);
    ASSERT_EQ(mirrorManager.startMirror(), 1);
    EXPECT_EQ(light.next(), (test::Datagram{1, 9, 1, 255, 255, 255, 0, 1}));
    ASSERT_EQ(mirrorManager.stopMirror(), 1);
    light.drain();
    ASSERT_EQ(mirrorManager.startMirror(), 1);
    fake::deliver(kCGDisplayStreamFrameStatusFrameComplete, &white);
    EXPECT_EQ(light.next(), (test::Datagram{1, 9, 1, 0, 0, 0, 0, 1}));
    ASSERT_EQ(mirrorManager.stopMirror(), 1);
}

TEST_F(Lifecycle, PortFollowsTheControlVersion) {
    test::LightReceiver narrow("127.0.53.5", 60221), wide("127.0.53.5", 60222);
    for (const int version : {0, 1, 2, -1}) {
        ASSERT_EQ(setDevices({{"127.0.53.5", version}}), 1);
        narrow.drain();
        wide.drain();
        ASSERT_EQ(mirrorManager.startMirror(), 1);
        EXPECT_TRUE((version == 1 ? narrow : wide).next()) << version;
        ASSERT_EQ(mirrorManager.stopMirror(), 1);
        EXPECT_FALSE((version == 1 ? wide : narrow).next(std::chrono::milliseconds(0))) << version;
    }
}

TEST_F(Lifecycle, ARunWithoutAModeEndsByItselfAndStillHasToBeStopped) {
    test::LightReceiver light("127.0.53.6", 60221);
    for (const int mode : {4, -1, 2147483647}) {
        ASSERT_EQ(setDevices({{"127.0.53.6", 1}}, mode), 1);
        fake::forgetCalls();
        CaptureStdout();
        ASSERT_EQ(mirrorManager.startMirror(), 1);
        while (!called("CGDisplayStreamStop"))
            std::this_thread::yield();
        EXPECT_EQ(mirrorManager.startMirror(), 0);
        EXPECT_TRUE(mirrorManager.running);
        EXPECT_EQ(mirrorManager.stopMirror(), 1);
        EXPECT_EQ(GetCapturedStdout(), "Mirroring already running.\n");
        EXPECT_EQ(fake::platform().calls,
                  (std::vector<std::string>{"CGDisplayStreamStart", "CGDisplayStreamStop"}));
        EXPECT_EQ(mirrorManager.frameBuffer, nullptr);
        EXPECT_FALSE(light.next(std::chrono::milliseconds(0)));
    }
}

TEST_F(Lifecycle, WithoutAModeASocketADeviceIsOpenedAllTheSame) {
    for (const int mode : {4, -1}) {
        ASSERT_EQ(setDevices({{"127.0.59.5", 1}, {"127.0.59.5", 2}}, mode), 1);
        CaptureStdout();
        {
            const test::NoDescriptors none;
            EXPECT_EQ(mirrorManager.startMirror(), 1);
            mirrorManager.mirrorThread.join();
        }
        EXPECT_EQ(GetCapturedStdout(), "cannot open socket\ncannot open socket\n");
    }
}

TEST_F(Lifecycle, RefusedStreamStartSkipsTheRun) {
    ASSERT_EQ(setDevices({{"127.0.53.7", 1}}), 1);
    fake::platform().startResult = kCGErrorFailure;
    EXPECT_EQ(run(), "Stream start failed!\n");
    EXPECT_FALSE(called("CGDisplayStreamStop"));
    EXPECT_NE(mirrorManager.frameBuffer, nullptr);
    EXPECT_TRUE(mirrorManager.running);
}

TEST_F(Lifecycle, MissingStreamIsAStartFailure) {
    ASSERT_EQ(setDevices({{"127.0.53.8", 1}}), 1);
    mirrorManager.displayStream = nullptr;
    CaptureStdout();
    ASSERT_EQ(mirrorManager.startMirror(), 1);
    EXPECT_EQ(mirrorManager.stopMirror(), 1);
    EXPECT_EQ(GetCapturedStdout(), "Stream start failed!\n");
}

TEST_F(Lifecycle, FailedStreamStopIsToldAndTheRunGoesOnToItsEnd) {
    ASSERT_EQ(setDevices({{"127.0.53.9", 1}}), 1);
    fake::platform().stopResult = kCGErrorFailure;
    CaptureStdout();
    ASSERT_EQ(mirrorManager.startMirror(), 1);
    EXPECT_EQ(mirrorManager.stopMirror(), 1);
    EXPECT_EQ(GetCapturedStdout(), "Stream stop failed!\n");
    EXPECT_EQ(mirrorManager.frameBuffer, nullptr);
}

TEST_F(Lifecycle, ExceptionEndsTheRunWithoutStoppingTheStream) {
    ASSERT_EQ(setDevices({{"127.0.53.10", 1}}), 1);
    fake::platform().throwOnStart = true;
    EXPECT_EQ(run(), "Error during runMirror\n");
    EXPECT_FALSE(called("CGDisplayStreamStop"));
    EXPECT_NE(mirrorManager.frameBuffer, nullptr);
    EXPECT_TRUE(mirrorManager.running);
}

TEST_F(Lifecycle, ExceptionInAModeLeavesTheStreamAndTheBuffer) {
    ASSERT_EQ(setDevices({{"127.0.59.6", 1}}, 3), 1);
    mirrorManager.paletteSize = -1;
    fake::forgetCalls();
    EXPECT_EQ(run(), "Error during runMirror\n");
    EXPECT_EQ(fake::platform().calls, std::vector<std::string>{"CGDisplayStreamStart"});
    EXPECT_NE(mirrorManager.frameBuffer, nullptr);
    EXPECT_TRUE(mirrorManager.running);
}

TEST_F(Lifecycle, AnAddressThatDoesNotParseHoldsUpNobody) {
    test::LightReceiver light("127.0.53.11", 60221);
    ASSERT_EQ(setDevices({{"nowhere", 2}, {"10.0.0.5:60222", 2}, {"127.0.53.11", 1}}), 1);
    ASSERT_EQ(mirrorManager.startMirror(), 1);
    EXPECT_TRUE(light.next());
    EXPECT_TRUE(light.next());
    EXPECT_EQ(mirrorManager.stopMirror(), 1);
}

// The default stack size of threads is set larger than any stack can be.
TEST_F(Lifecycle, AThreadThatCannotBeMadeIsAnError) {
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
    GTEST_SKIP() << "the sanitizers end the process when a thread cannot be made";
#endif
    ASSERT_EQ(setDevices({{"127.0.53.13", 1}}), 1);
    pthread_attr_t before, huge;
    pthread_getattr_default_np(&before);
    pthread_attr_init(&huge);
    pthread_attr_setstacksize(&huge, std::size_t{1} << 48);
    CaptureStdout();
    pthread_setattr_default_np(&huge);
    const int started = mirrorManager.startMirror();
    pthread_setattr_default_np(&before);
    EXPECT_EQ(GetCapturedStdout(), "Error starting mirroring\n");
    EXPECT_EQ(started, -1);
    EXPECT_FALSE(mirrorManager.mirrorThread.joinable());
    EXPECT_EQ(mirrorManager.startMirror(), 1);
    EXPECT_EQ(mirrorManager.stopMirror(), 1);
    pthread_attr_destroy(&before);
    pthread_attr_destroy(&huge);
}

TEST_F(Lifecycle, JoiningOneselfIsAnError) {
#if __has_feature(thread_sanitizer)
    GTEST_SKIP() << "the thread sanitizer forgets a thread that tries to join itself";
#endif
    CaptureStdout();
    EXPECT_EQ(onMirroringThread([] { return mirrorManager.stopMirror(); }), -1);
    EXPECT_EQ(GetCapturedStdout(), "Error stopping mirror\n");
}

} // namespace
