// What can go wrong around a run, through the C interface alone.
#include "mirror/mirrorInterface.h"
#include "tests/endToEnd/lightSetup.h"
#include "tests/support/virtualScreen.h"

#include <chrono>
#include <cstdlib>

using test::LightReceiver;
using test::LightSetup;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

namespace {

const std::vector<LightSetup> oneLight = {{"127.0.55.1", 1, 0, 0.2, {{1, 40, 40}}}};

class Fault : public testing::Test {
protected:
    void TearDown() override { stopMirror(); }
    static int configure(std::string text) { return setMirrorConfig(text.data()); }
    LightReceiver receiver{"127.0.55.1", 60221};
};

TEST_F(Fault, UnknownDisplayIsRefused) {
    test::VirtualScreen screen(200, 100);
    screen.use();
    const std::uint32_t there = test::displayIDs().at(0);
    ASSERT_EQ(configure(test::documentOf(there, 0, {})), 1);
    CaptureStdout();
    const int configured = configure(test::documentOf(there == 5 ? 6 : 5, 0, oneLight));
    const int started = startMirror();
    EXPECT_EQ(GetCapturedStdout(), "Screen Recording not allowed!\nNo devices.\n");
    EXPECT_EQ(configured, 0);
    EXPECT_EQ(started, 0);
}

TEST_F(Fault, WithoutAServer) {
    unsetenv("DISPLAY");
    EXPECT_TRUE(test::displayIDs().empty());
    CaptureStdout();
    EXPECT_EQ(configure(test::documentOf(1, 0, oneLight)), 0);
    EXPECT_EQ(GetCapturedStdout(), "Screen Recording not allowed!\n");
}

TEST_F(Fault, RefusedConfigurationLeavesTheDevicesButNothingRuns) {
    test::VirtualScreen screen(200, 100);
    screen.use();
    ASSERT_EQ(configure(test::documentOf(test::displayIDs().at(0), 0, oneLight)), 1);
    CaptureStdout();
    EXPECT_EQ(configure(test::documentOf(5, 0, {})), 0);
    EXPECT_EQ(startMirror(), 1);
    EXPECT_EQ(stopMirror(), 1);
    EXPECT_EQ(GetCapturedStdout(), "Screen Recording not allowed!\nStream start failed!\n");
}

TEST_F(Fault, ServerKilledInMidRun) {
    test::VirtualScreen screen(200, 100);
    screen.use();
    screen.fill(0xff0000);
    ASSERT_EQ(configure(test::documentOf(test::displayIDs().at(0), 0, oneLight)), 1);
    ASSERT_EQ(startMirror(), 1);
    const auto red = test::matchDatagram(oneLight[0], test::plain(200, 100, 0xff0000));
    ASSERT_TRUE(
        test::arrives(receiver, red, test::matchDatagram(oneLight[0], test::plain(200, 100, 0))));
    screen.kill();
    receiver.drain();
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(receiver.next(), red); // the last frame stays
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(stopMirror(), 1);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));

    test::VirtualScreen next(100, 100);
    next.use();
    next.fill(0x00ff00);
    ASSERT_EQ(configure(test::documentOf(test::displayIDs().at(0), 0, oneLight)), 1);
    ASSERT_EQ(startMirror(), 1);
    const auto green = test::matchDatagram(oneLight[0], test::plain(100, 100, 0x00ff00));
    for (;;) {
        const auto got = receiver.next();
        ASSERT_TRUE(got);
        if (*got == green)
            break;
    }
}

TEST_F(Fault, MonitorGoneInMidRun) {
    test::VirtualScreen screen(400, 200);
    screen.use();
    screen.run({"xrandr", "--setmonitor", "first", "200/100x200/100+0+0", screen.output()});
    screen.run({"xrandr", "--setmonitor", "second", "200/100x200/100+200+0", "none"});
    screen.fill(0x0000ff);
    ASSERT_EQ(configure(test::documentOf(test::displayIDs().at(1), 0, oneLight)), 1);
    ASSERT_EQ(startMirror(), 1);
    const auto blue = test::matchDatagram(oneLight[0], test::plain(200, 200, 0x0000ff));
    ASSERT_TRUE(
        test::arrives(receiver, blue, test::matchDatagram(oneLight[0], test::plain(200, 200, 0))));
    screen.run({"xrandr", "--delmonitor", "second"});
    screen.fill(0xff0000);
    receiver.drain();
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(receiver.next(), blue);
    EXPECT_EQ(stopMirror(), 1);
}

// Every order of calls that a host may think of, none of which may end its process.
TEST_F(Fault, CallsInAnyOrder) {
    test::VirtualScreen screen(200, 100);
    screen.use();
    std::vector<char> buffer(4096);
    EXPECT_EQ(getPalette(buffer.data()), 0);
    EXPECT_STREQ(buffer.data(), R"({"palette":[{"R":0,"G":0,"B":0}]})");
    EXPECT_EQ(getStreamFrameJson(buffer.data()), 0);
    EXPECT_EQ(getSizeOfStreamFrameJson(), 0);
    EXPECT_EQ(stopMirror(), 1);
    ASSERT_EQ(configure(test::documentOf(test::displayIDs().at(0), 0, {})), 1);
    EXPECT_EQ(startMirror(), 0);
    ASSERT_EQ(configure(test::documentOf(test::displayIDs().at(0), 0, oneLight)), 1);
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
