// Runs of mirrorctl over a real screen. Each test has a light device address of its own, since the
// port is the same for all.
#include "tests/support/lightReceiver.h"
#include "tests/support/virtualScreen.h"
#include "tests/tools/mirrorctl/lightsFile.h"
#include "tests/tools/mirrorctl/program.h"

#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

using test::Ending;
using test::LightReceiver;
using test::LightsFile;
using test::lightsText;
using test::Program;
using test::receives;
using test::redPanel;

namespace {

// The shared memory segments that `pid` made and that are still there.
std::string segmentsOf(pid_t pid) {
    std::ifstream list("/proc/sysvipc/shm");
    std::string line;
    std::string found;
    while (std::getline(list, line)) {
        std::istringstream words(line);
        std::string key, id, permissions, size, creator;
        words >> key >> id >> permissions >> size >> creator;
        if (creator == std::to_string(pid))
            found += line + "\n";
    }
    return found;
}

// Mirrors a red screen until `signum` comes.
void endsCleanlyOn(int signum, const std::string &ip, int ignored = 0) {
    test::VirtualScreen screen(640, 480);
    screen.fill(0xFF0000);
    LightReceiver light(ip, 60222);
    const auto display = test::onlyDisplay(screen.display());
    const LightsFile file(lightsText(display, ip));
    Program program({"run", file.path()}, {{"DISPLAY", screen.display()}}, "", ignored);
    const pid_t pid = program.pid();
    program.waitFor("Mirroring display " + std::to_string(display) +
                    " in match mode onto 1 device with 1 panel. Ctrl-C stops.\n");
    EXPECT_TRUE(receives(light, redPanel));
    program.signal(signum);
    const Ending ending = program.finish();
    EXPECT_EQ(ending.status, 0) << ending.out << ending.err;
    EXPECT_EQ(ending.err, "");
    EXPECT_NE(ending.out.find("Stopping: "), std::string::npos) << ending.out;
    EXPECT_NE(ending.out.find("Mirrored display " + std::to_string(display) + " for "),
              std::string::npos)
        << ending.out;
    EXPECT_EQ(segmentsOf(pid), "");
}

double secondsIn(const std::string &out) {
    const auto at = out.find(" for ");
    return at == std::string::npos ? -1.0 : std::stod(out.substr(at + 5));
}

} // namespace

TEST(MirrorctlRun, LightsADeviceForASecond) {
    test::VirtualScreen screen(640, 480);
    screen.fill(0xFF0000);
    LightReceiver light("127.0.40.11", 60222);
    const auto display = test::onlyDisplay(screen.display());
    const LightsFile file(lightsText(display, "127.0.40.11"));
    Program program({"run", file.path(), "--seconds", "1"}, {{"DISPLAY", screen.display()}});
    EXPECT_TRUE(receives(light, redPanel));
    const Ending ending = program.finish();
    EXPECT_EQ(ending.status, 0) << ending.err;
    EXPECT_EQ(ending.err, "");
    EXPECT_GE(secondsIn(ending.out), 1.0) << ending.out;
    EXPECT_NE(ending.out.find(" s onto 1 device with 1 panel.\n"), std::string::npos) << ending.out;
    EXPECT_EQ(ending.out.find("Stopping"), std::string::npos) << ending.out;
}

TEST(MirrorctlRun, ReadsStandardInput) {
    test::VirtualScreen screen(640, 480);
    screen.fill(0xFF0000);
    LightReceiver light("127.0.40.12", 60222);
    const auto display = test::onlyDisplay(screen.display());
    Program program({"run", "-", "--seconds", "0.5"}, {{"DISPLAY", screen.display()}},
                    lightsText(display, "127.0.40.12"));
    EXPECT_TRUE(receives(light, redPanel));
    EXPECT_EQ(program.finish().status, 0);
}

TEST(MirrorctlRun, EndsCleanlyOnControlC) {
    endsCleanlyOn(SIGINT, "127.0.40.13");
}

TEST(MirrorctlRun, EndsCleanlyOnTermination) {
    endsCleanlyOn(SIGTERM, "127.0.40.14");
}

TEST(MirrorctlRun, EndsCleanlyOnHangUp) {
    endsCleanlyOn(SIGHUP, "127.0.40.15");
}

// A script starts what it puts into the background with SIGINT ignored.
TEST(MirrorctlRun, EndsCleanlyOnControlCThoughItWasIgnored) {
    endsCleanlyOn(SIGINT, "127.0.40.18", SIGINT);
}

TEST(MirrorctlRun, GoesOnWhenHangUpWasIgnored) {
    test::VirtualScreen screen(640, 480);
    LightReceiver light("127.0.40.16", 60222);
    const auto display = test::onlyDisplay(screen.display());
    Program program({"run", "-", "--seconds", "1"}, {{"DISPLAY", screen.display()}},
                    lightsText(display, "127.0.40.16"), SIGHUP);
    ASSERT_TRUE(light.next());
    program.signal(SIGHUP);
    const Ending ending = program.finish();
    EXPECT_EQ(ending.status, 0) << ending.err;
    EXPECT_GE(secondsIn(ending.out), 1.0) << ending.out;
    EXPECT_EQ(ending.out.find("Stopping"), std::string::npos) << ending.out;
}

TEST(MirrorctlRun, StopsWhenToldTwice) {
    test::VirtualScreen screen(640, 480);
    LightReceiver light("127.0.40.17", 60222);
    const auto display = test::onlyDisplay(screen.display());
    Program program({"run", "-"}, {{"DISPLAY", screen.display()}},
                    lightsText(display, "127.0.40.17"));
    ASSERT_TRUE(light.next());
    program.signal(SIGINT);
    program.signal(SIGTERM);
    EXPECT_EQ(program.finish().status, 0);
}
