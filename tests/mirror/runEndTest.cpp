// Runs that end by themselves.
#include "tests/mirror/manager.h"
#include "tests/support/lightReceiver.h"
#include "tests/support/noDescriptors.h"

namespace {

class RunEnd : public ManagerTest {
protected:
    // Starts a run, waits until it has ended by itself and gives what it said.
    static std::string run() {
        CaptureStdout();
        EXPECT_EQ(mirrorManager.startMirror(), 1);
        mirrorManager.mirrorThread.join();
        return GetCapturedStdout();
    }
};

TEST_F(RunEnd, WithoutAModeTheStreamIsStartedAndStoppedAtOnce) {
    test::LightReceiver light("127.0.59.4", 60221);
    for (const int mode : {4, -1}) {
        ASSERT_EQ(configure(document("[" + device("127.0.59.4", 1, "[]") + "]", mode)), 1);
        fake::forgetCalls();
        EXPECT_EQ(run(), "");
        EXPECT_EQ(fake::platform().calls,
                  (std::vector<std::string>{"CGDisplayStreamStart", "CGDisplayStreamStop"}));
        EXPECT_EQ(mirrorManager.frameBuffer, nullptr);
        EXPECT_FALSE(light.next(std::chrono::milliseconds(0)));
    }
}

TEST_F(RunEnd, WithoutAModeASocketADeviceIsOpenedAllTheSame) {
    for (const int mode : {4, -1}) {
        ASSERT_EQ(configure(document("[" + device("127.0.59.5", 1, "[]") + "," +
                                         device("127.0.59.5", 2, "[]") + "]",
                                     mode)),
                  1);
        CaptureStdout();
        {
            const test::NoDescriptors none;
            EXPECT_EQ(mirrorManager.startMirror(), 1);
            mirrorManager.mirrorThread.join();
        }
        EXPECT_EQ(GetCapturedStdout(), "cannot open socket\ncannot open socket\n");
    }
}

TEST_F(RunEnd, ExceptionInAModeLeavesTheStreamAndTheBuffer) {
    ASSERT_EQ(configure(document("[" + device("127.0.59.6", 1, "[]") + "]", 3)), 1);
    mirrorManager.paletteSize = -1;
    fake::forgetCalls();
    EXPECT_EQ(run(), "Error during runMirror\n");
    EXPECT_EQ(fake::platform().calls, std::vector<std::string>{"CGDisplayStreamStart"});
    EXPECT_NE(mirrorManager.frameBuffer, nullptr);
    EXPECT_TRUE(mirrorManager.running);
}

} // namespace
