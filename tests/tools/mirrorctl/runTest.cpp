// Runs of mirrorctl on a real screen. Each test has its own light address, since all lights use the
// same port.
#include "tests/tools/mirrorctl/mirrorSetup.h"

#include <csignal>

using test::contains;
using test::LightReceiver;
using test::Process;
using test::ProcessResult;
using test::receives;
using test::redPanel;

namespace {

class MirrorctlRun : public test::ScreenTest {
protected:
    // Mirrors a red screen, with the document on standard input, until the signal arrives.
    void endsCleanlyOn(int signal, const std::string &ip, int ignored = 0) {
        screen.fill(0xFF0000);
        LightReceiver light(ip, 60222);
        Process program = start({"run", "-"}, {.input = lights(ip), .ignoredSignal = ignored});
        program.waitFor("Mirroring display " + std::to_string(display) +
                        " in match mode onto 1 device with 1 panel. Ctrl-C stops.\n");
        EXPECT_TRUE(receives(light, redPanel));
        program.signal(signal);
        const ProcessResult result = program.finish();
        test::expectOutput(result, 0,
                           {"Stopping: ", "Mirrored display " + std::to_string(display) + " for "});
        EXPECT_EQ(result.err, "");
    }
};

double secondsIn(const std::string &out) {
    const auto at = out.find(" for ");
    return at == std::string::npos ? -1.0 : std::stod(out.substr(at + 5));
}

} // namespace

TEST_F(MirrorctlRun, LightsADeviceForSomeSeconds) {
    screen.fill(0xFF0000);
    LightReceiver light("127.0.40.11", 60222);
    const std::string file = folder.write("lights.json", lights("127.0.40.11"));
    Process program = start({"run", file, "--seconds", "3"});
    EXPECT_TRUE(receives(light, redPanel));
    const ProcessResult result = program.finish();
    test::expectOutput(result, 0, {" s onto 1 device with 1 panel.\n"});
    EXPECT_EQ(result.err, "");
    EXPECT_GE(secondsIn(result.out), 3.0) << result.out;
    EXPECT_FALSE(contains(result.out, "Stopping"));
}

TEST_F(MirrorctlRun, EndsCleanlyOnControlC) {
    endsCleanlyOn(SIGINT, "127.0.40.13");
}

TEST_F(MirrorctlRun, EndsCleanlyOnTermination) {
    endsCleanlyOn(SIGTERM, "127.0.40.14");
}

TEST_F(MirrorctlRun, EndsCleanlyOnHangUp) {
    endsCleanlyOn(SIGHUP, "127.0.40.15");
}

// Scripts start background programs with SIGINT ignored.
TEST_F(MirrorctlRun, EndsCleanlyOnControlCThoughItWasIgnored) {
    endsCleanlyOn(SIGINT, "127.0.40.18", SIGINT);
}

TEST_F(MirrorctlRun, GoesOnWhenHangUpWasIgnored) {
    LightReceiver light("127.0.40.16", 60222);
    Process program = start({"run", "-", "--seconds", "1"},
                            {.input = lights("127.0.40.16"), .ignoredSignal = SIGHUP});
    ASSERT_TRUE(light.next());
    program.signal(SIGHUP);
    const ProcessResult result = program.finish();
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_GE(secondsIn(result.out), 1.0) << result.out;
    EXPECT_FALSE(contains(result.out, "Stopping"));
}

TEST_F(MirrorctlRun, StopsWhenToldTwice) {
    LightReceiver light("127.0.40.17", 60222);
    Process program = start({"run", "-"}, {.input = lights("127.0.40.17")});
    ASSERT_TRUE(light.next());
    program.signal(SIGINT);
    program.signal(SIGTERM);
    EXPECT_EQ(program.finish().status, 0);
}
