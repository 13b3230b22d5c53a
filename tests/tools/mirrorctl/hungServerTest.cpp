// The commands on an X server that hangs: it takes connections and answers nothing.
#include "tests/support/virtualScreen.h"
#include "tests/tools/mirrorctl/lightsFile.h"
#include "tests/tools/mirrorctl/program.h"

#include <chrono>
#include <csignal>
#include <gtest/gtest.h>

using test::contains;
using test::Ending;
using test::lightsText;
using test::Program;

namespace {

class HungServer {
public:
    HungServer() : display(test::onlyDisplay(screen.display())) { kill(screen.pid(), SIGSTOP); }

    Program start(const std::vector<std::string> &arguments) const {
        return Program(arguments, {{"DISPLAY", screen.display()}},
                       lightsText(display, "127.0.58.90"));
    }

    std::string silence() const {
        return "The X server \"" + screen.display() + "\" does not answer";
    }

private:
    test::VirtualScreen screen{640, 480};
    const std::uint32_t display;
};

} // namespace

TEST(MirrorctlHungServer, IsLeftAtOnceOnASignal) {
    const HungServer server;
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
        Program program = server.start(one.arguments);
        program.waitForSignals();
        const auto sent = std::chrono::steady_clock::now();
        program.signal(one.signum);
        const Ending ending = program.finish();
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - sent;
        // A quarter of a second on a machine that is not busy, and one more under the thread
        // sanitizer, which sleeps at the end; the library itself gives up after four.
        EXPECT_LT(taken.count(), 2.5) << one.words;
        EXPECT_EQ(ending.status, 75) << one.words;
        EXPECT_EQ(ending.err, one.words + server.silence() + ". Is it stopped or overloaded?\n");
    }
}

TEST(MirrorctlHungServer, IsNamed) {
    const HungServer server;
    for (const auto &arguments :
         {std::vector<std::string>{"displays"}, {"run", "-"}, {"layout", "1x1", "127.0.58.90"}}) {
        Program program = server.start(arguments);
        const Ending ending = program.finish();
        EXPECT_EQ(ending.status, 69) << arguments[0];
        EXPECT_TRUE(contains(ending.err, server.silence())) << ending.err;
        EXPECT_FALSE(contains(ending.err, "no display")) << ending.err;
    }
}

TEST(MirrorctlHungServer, IsNoFindingOfACheckUnlessADisplayIsNeeded) {
    const HungServer server;
    const Ending ending = server.start({"check", "-"}).finish();
    EXPECT_EQ(ending.status, 0) << ending.out;
    const std::string silence = server.silence().substr(1); // "he X server ..."
    EXPECT_TRUE(contains(ending.out, "standard input: fine.\nThe displays are not known, since t" +
                                         silence + "."))
        << ending.out;
    const Ending needed = server.start({"check", "-", "--display"}).finish();
    EXPECT_EQ(needed.status, 69) << needed.out;
    EXPECT_TRUE(contains(needed.out, "error: /displayID: cannot be looked for, since t" + silence))
        << needed.out;
}
