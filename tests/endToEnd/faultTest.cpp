// Faults around a run, through the C interface only.
#include "tests/endToEnd/lightSetup.h"
#include "tests/support/virtualScreen.h"

#include <chrono>
#include <cstdlib>

using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

namespace {

class Fault : public test::OneLightRun {
protected:
    Fault() : OneLightRun("127.0.55.1") {}
};

TEST_F(Fault, UnknownDisplayIsRefused) {
    test::UsedScreen screen(200, 100);
    const std::uint32_t there = test::displayIDs().at(0);
    ASSERT_EQ(configure(test::documentOf(there, 0, {})), 1);
    CaptureStdout();
    const int configured = configure(test::documentOf(there == 5 ? 6 : 5, 0, {light}));
    const int started = startMirror();
    EXPECT_EQ(GetCapturedStdout(), "Screen Recording not allowed!\nNo devices.\n");
    EXPECT_EQ(configured, 0);
    EXPECT_EQ(started, 0);
}

TEST_F(Fault, WithoutAServer) {
    unsetenv("DISPLAY");
    EXPECT_TRUE(test::displayIDs().empty());
    CaptureStdout();
    EXPECT_EQ(configure(test::documentOf(1, 0, {light})), 0);
    EXPECT_EQ(GetCapturedStdout(), "Screen Recording not allowed!\n");
}

TEST_F(Fault, RefusedConfigurationLeavesTheDevicesButNothingRuns) {
    test::UsedScreen screen(200, 100);
    ASSERT_EQ(configure(document()), 1);
    CaptureStdout();
    EXPECT_EQ(configure(test::documentOf(5, 0, {})), 0);
    EXPECT_EQ(startMirror(), 1);
    EXPECT_EQ(stopMirror(), 1);
    EXPECT_EQ(GetCapturedStdout(), "Screen Recording not allowed!\nStream start failed!\n");
}

TEST_F(Fault, ServerKilledInMidRun) {
    test::UsedScreen screen(200, 100);
    screen.fill(0xff0000);
    start();
    ASSERT_TRUE(test::arrives(receiver, plainDatagram(0xff0000), plainDatagram(0)));
    screen.kill();
    receiver.drain();
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(receiver.next(), plainDatagram(0xff0000)); // the last frame is kept
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(stopMirror(), 1);
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(5));

    test::UsedScreen next(100, 100);
    next.fill(0x00ff00);
    start();
    EXPECT_TRUE(showsPlain(0x00ff00));
}

TEST_F(Fault, MonitorGoneInMidRun) {
    test::UsedScreen screen(400, 200);
    screen.run({"xrandr", "--setmonitor", "first", "200/100x200/100+0+0", screen.output()});
    screen.run({"xrandr", "--setmonitor", "second", "200/100x200/100+200+0", "none"});
    screen.fill(0x0000ff);
    start(test::documentOf(test::displayIDs().at(1), 0, {light}));
    ASSERT_TRUE(test::arrives(receiver, plainDatagram(0x0000ff), plainDatagram(0)));
    screen.run({"xrandr", "--delmonitor", "second"});
    screen.fill(0xff0000);
    receiver.drain();
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(receiver.next(), plainDatagram(0x0000ff));
    EXPECT_EQ(stopMirror(), 1);
}

// Calls in unusual orders, none of which may end the host's process.
TEST_F(Fault, CallsInAnyOrder) {
    test::UsedScreen screen(200, 100);
    std::vector<char> buffer(4096);
    EXPECT_EQ(getPalette(buffer.data()), 0);
    EXPECT_STREQ(buffer.data(), R"({"palette":[{"R":0,"G":0,"B":0}]})");
    EXPECT_EQ(getStreamFrameJson(buffer.data()), 0);
    EXPECT_EQ(getSizeOfStreamFrameJson(), 0);
    EXPECT_EQ(stopMirror(), 1);
    ASSERT_EQ(configure(test::documentOf(test::displayIDs().at(0), 0, {})), 1);
    EXPECT_EQ(startMirror(), 0);
    ASSERT_EQ(configure(document()), 1);
    EXPECT_EQ(startMirror(), 1);
    EXPECT_EQ(startMirror(), 0);
    EXPECT_EQ(captureCurrentStreamFrames(), 0);
    EXPECT_EQ(stopMirror(), 1);
    EXPECT_EQ(startMirror(), 1); // without a frame buffer
    EXPECT_EQ(captureCurrentStreamFrames(), 0);
    EXPECT_EQ(getPalette(buffer.data()), 0);
    EXPECT_EQ(configure("{"), 0);
    EXPECT_EQ(getPalette(buffer.data()), 0);
    EXPECT_EQ(configure(test::documentOf(3, 0, {})), 0);
    EXPECT_EQ(getPalette(buffer.data()), 0);
}

} // namespace
