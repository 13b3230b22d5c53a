// The exported functions return the results of the manager's methods, failures in particular.
#include "mirror/mirrorInterface.h"
#include "tests/mirror/failingAllocation.h"
#include "tests/mirror/manager.h"
#include "tests/mirror/scriptedSystem.h"

#include <string_view>

namespace {

class Interface : public ManagerTest {
protected:
    Interface() { CaptureStdout(); } // other tests check the messages
    ~Interface() override { GetCapturedStdout(); }

    // The result of a call whose first allocation fails.
    template <class Call> static int withoutMemory(Call call) {
        const test::FailingAllocation failure(1);
        return call();
    }

    char buffer[512];
};

TEST_F(Interface, GetDisplays) {
    EXPECT_EQ(getDisplays(buffer, sizeof buffer), 1);
    EXPECT_STREQ(buffer,
                 R"({"numDisplays":1,"displays":[{"displayID":1,"width":64,"height":48}]})");
    EXPECT_EQ(withoutMemory([&] { return getDisplays(buffer, sizeof buffer); }), -1);
}

TEST_F(Interface, GetSizeOfStreamFrameJson) {
    EXPECT_EQ(getSizeOfStreamFrameJson(), 0);
    mirrorManager.streamFrames = {"0 "};
    constexpr std::string_view text = R"({"numDevices":0,"devices":[]})";
    EXPECT_EQ(getSizeOfStreamFrameJson(), static_cast<int>(text.size()));
    EXPECT_EQ(withoutMemory([] { return getSizeOfStreamFrameJson(); }), -1);
}

TEST_F(Interface, GetStreamFrameJson) {
    EXPECT_EQ(getStreamFrameJson(buffer), 0);
    mirrorManager.streamFrameJson = {};
    EXPECT_EQ(withoutMemory([&] { return getStreamFrameJson(buffer); }), -1);
}

TEST_F(Interface, CaptureCurrentStreamFrames) {
    test::ScriptedSystem system;
    system.atSleep = [] {};
    EXPECT_EQ(captureCurrentStreamFrames(), -1);
    system.atSleep = [] { mirrorManager.captureRequested = false; };
    EXPECT_EQ(captureCurrentStreamFrames(), 0);
}

TEST_F(Interface, GetPalette) {
    EXPECT_EQ(getPalette(buffer), 0);
    mirrorManager.paletteSize = -1;
    EXPECT_EQ(getPalette(buffer), -1);
}

TEST_F(Interface, SetMirrorConfig) {
    std::string good = document({}), bad = "{";
    EXPECT_EQ(setMirrorConfig(good.data()), 1);
    EXPECT_EQ(setMirrorConfig(bad.data()), 0);
}

TEST_F(Interface, StartMirror) {
    EXPECT_EQ(startMirror(), 0);
    ASSERT_EQ(setDevices({{"127.0.59.2", 1}}), 1);
    EXPECT_EQ(withoutMemory([] { return startMirror(); }), -1);
    EXPECT_EQ(startMirror(), 1);
}

TEST_F(Interface, StopMirror) {
    EXPECT_EQ(stopMirror(), 1);
    EXPECT_EQ(onMirroringThread(stopMirror), -1);
}

} // namespace
