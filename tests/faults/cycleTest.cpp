// Repeats the same calls many times; no resource may grow.
#include "tests/faults/faultRun.h"
#include "tests/platform/processUsage.h"

#include <csignal>
#include <cstdlib>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr std::size_t pageSlack = std::size_t{1} << 20; // bytes of growth allowed in a settled heap

std::string kib(std::size_t bytes) {
    return std::to_string(bytes / 1024) + " KiB";
}

std::string told(const test::ResourceUsage &usage) {
    return std::to_string(usage.descriptors) + " descriptors, " + std::to_string(usage.threads) +
           " threads, " + kib(usage.heapBytes) + " of heap, " + kib(usage.residentBytes) +
           " resident";
}

class Cycle : public test::FaultRun {
protected:
    // Calls `once` in each of `rounds` and expects no growth after the first tenth, except `kept`
    // bytes per round.
    template <class Once>
    static void expectNoGrowth(const std::string &what, int rounds, std::size_t kept, Once once) {
        const std::size_t threads = test::threads();
        test::ResourceUsage early{};
        for (int round = 0; round < rounds; ++round) {
            once();
            if (testing::Test::HasFailure())
                return;
            if (round == rounds / 10)
                early = test::resourceUsage();
        }
        EXPECT_TRUE(test::threadsBecome(threads));
        const test::ResourceUsage late = test::resourceUsage();
        test::printMeasurement(what + ", round " + std::to_string(rounds / 10 + 1) + ": " +
                               told(early));
        test::printMeasurement(what + ", round " + std::to_string(rounds) + ": " + told(late));
        const std::size_t keptInAll = kept * static_cast<std::size_t>(rounds);
        EXPECT_EQ(late.descriptors, early.descriptors);
        EXPECT_LE(late.heapBytes, early.heapBytes + keptInAll + 4096);
        EXPECT_LE(late.residentBytes, early.residentBytes + keptInAll + pageSlack);
    }
};

TEST_F(Cycle, StartAndStop) {
    ASSERT_EQ(configure(document()), 1);
    expectNoGrowth("start and stop", test::fullFaults() ? 10000 : 100, 0, [] {
        EXPECT_EQ(startMirror(), 1);
        EXPECT_EQ(stopMirror(), 1);
    });
    start();
    EXPECT_TRUE(showsPlain(0x00ff00));
}

// By design, a configuration never releases its stream, the stream's options and its queue. The
// frame buffer remains only if no run takes it over.
TEST_F(Cycle, ConfigureStartAndStop) {
    const std::string text = document();
    constexpr std::size_t named = 1024;
    expectNoGrowth("configure, start, stop", test::fullFaults() ? 10000 : 60, named, [&] {
        EXPECT_EQ(configure(text), 1);
        EXPECT_EQ(startMirror(), 1);
        EXPECT_EQ(stopMirror(), 1);
    });
}

// The other calls of a host during a run.
TEST_F(Cycle, Questions) {
    start();
    ASSERT_TRUE(showsPlain(0x00ff00));
    expectNoGrowth("displays, capture, its text, palette", test::fullFaults() ? 2000 : 30, 0, [] {
        char text[1024] = "";
        EXPECT_EQ(getDisplays(text, sizeof text), 1);
        EXPECT_EQ(captureCurrentStreamFrames(), 0);
        EXPECT_GT(getSizeOfStreamFrameJson(), 0);
        EXPECT_EQ(getStreamFrameJson(text), 0);
        EXPECT_EQ(getPalette(text), 0);
    });
}

// Runs a host that loads the library, starts a run and unloads it in mid-run. The host checks
// descriptors and threads itself. Returns its peak memory in KiB.
long maxMemoryOfLoads(const std::string &config, int rounds) {
    const std::string number = std::to_string(rounds);
    const pid_t host = fork();
    if (host == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        execl(UNLOADHOST, UNLOADHOST, MIRROR_LIBRARY, config.c_str(), number.c_str(), "60221",
              nullptr);
        _exit(127);
    }
    int status = -1;
    rusage usage{};
    EXPECT_EQ(wait4(host, &status, 0, &usage), host);
    EXPECT_EQ(status, 0);
    return usage.ru_maxrss;
}

TEST_F(Cycle, LoadRunAndUnload) {
    light.ip = "127.0.56.1"; // the host listens there
    const int rounds = test::fullFaults() ? 1000 : 20;
    const long few = maxMemoryOfLoads(document(), rounds / 10);
    const long many = maxMemoryOfLoads(document(), rounds);
    test::printMeasurement("load, run, unload: " + std::to_string(few) + " KiB after " +
                           std::to_string(rounds / 10) + " rounds, " + std::to_string(many) +
                           " KiB after " + std::to_string(rounds));
    // Each round may leave what a configuration and the loader never release.
    EXPECT_LE(many, few + 2048 + 4 * rounds);
}

} // namespace
