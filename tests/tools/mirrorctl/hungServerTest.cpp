// The commands on a hung display server: it accepts connections but does not answer.
#include "tests/tools/mirrorctl/mirrorSetup.h"

#include <chrono>
#include <csignal>
#include <poll.h>

using test::contains;
using test::Process;
using test::ProcessResult;

namespace {

class MirrorctlHungServer : public test::ScreenTest {
protected:
    MirrorctlHungServer() { kill(screen.pid(), SIGSTOP); }

    Process start(const std::vector<std::string> &arguments) const {
        return ScreenTest::start(arguments, {.input = lights("127.0.58.90")});
    }

    std::string silence() const { return "The " + serverName() + " does not answer"; }
};

// Waits until the program blocks signals: from then on a signal no longer ends it directly.
void waitForSignals(const Process &program) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    // Exactly these: a thread that creates another blocks all signals for a moment.
    constexpr unsigned long long wanted =
        1 << (SIGHUP - 1) | 1 << (SIGINT - 1) | 1 << (SIGTERM - 1);
    while (std::stoull("0" + program.status("SigBlk"), nullptr, 16) != wanted) {
        if (std::chrono::steady_clock::now() > deadline)
            throw std::runtime_error("mirrorctl holds no signal back");
        poll(nullptr, 0, 2);
    }
}

} // namespace

TEST_F(MirrorctlHungServer, IsLeftAtOnceOnASignal) {
    const struct {
        std::vector<std::string> arguments;
        std::string words;
        int signum;
    } cases[] = {
        {{"run", "-"}, "Nothing was mirrored: Interrupt.\n", SIGINT},
        {{"run", "-"}, "Nothing was mirrored: Terminated.\n", SIGTERM},
        {{"snapshot", "-"}, "No snapshot: Hangup.\n", SIGHUP},
        {{"palette", "-"}, "No palette: Interrupt.\n", SIGINT},
        {{"doctor", "-"}, "Not examined to the end: Interrupt.\n", SIGINT},
        {{"displays"}, "The displays are not listed: Interrupt.\n", SIGINT},
    };
    for (const auto &one : cases) {
        Process program = start(one.arguments);
        waitForSignals(program);
        const auto sent = std::chrono::steady_clock::now();
        program.signal(one.signum);
        const ProcessResult result = program.finish();
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - sent;
        // It takes 0.5 s on an idle machine. The library itself gives up after 4 s.
        EXPECT_LT(taken.count(), 3.0) << one.words;
        EXPECT_EQ(result.status, 75) << one.words;
        EXPECT_EQ(result.err, one.words + silence() + ". Is it stopped or overloaded?\n");
    }
}

TEST_F(MirrorctlHungServer, IsNamed) {
    for (const auto &arguments :
         {std::vector<std::string>{"displays"}, {"run", "-"}, {"layout", "1x1", "127.0.58.90"}}) {
        const ProcessResult result = start(arguments).finish();
        test::expectErrors(result, 69, {silence()});
        EXPECT_FALSE(contains(result.err, "no display"));
    }
}

TEST_F(MirrorctlHungServer, IsNoFindingOfACheckUnlessADisplayIsNeeded) {
    const std::string reason = "because t" + silence().substr(1); // "because the X server ..."
    test::expectOutput(start({"check", "-"}).finish(), 0,
                       {"standard input: fine.\nThe displays are not known, " + reason + "."});
    test::expectOutput(start({"check", "-", "--display"}).finish(), 69,
                       {"error: /displayID: cannot be checked, " + reason});
}
