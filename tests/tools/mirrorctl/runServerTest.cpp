// Runs of mirrorctl whose display server hangs, dies and comes back.
#include "tests/tools/mirrorctl/mirrorSetup.h"

#include <chrono>
#include <csignal>
#include <memory>
#include <optional>

using test::contains;
using test::greenPanel;
using test::LightReceiver;
using test::Process;
using test::ProcessResult;
using test::receives;
using test::redPanel;

namespace {

// A run in match mode that has sent the screen's red.
class MirrorctlRunServer : public test::ScreenTest {
protected:
    void begin(const std::string &ip, std::vector<std::string> options) {
        screen.fill(0xFF0000);
        light.emplace(ip, 60222);
        options.insert(options.begin(), {"run", "-"});
        program.reset(new Process(start(options, {.input = lights(ip)})));
        ASSERT_TRUE(receives(*light, redPanel));
        // Waits until the program has received the server's answer.
        program->waitFor(options[2] == "--json" ? "\"running\"" : "Mirroring display");
    }

    std::string server(const char *predicate) const {
        return "The " + serverName() + " " + predicate;
    }

    std::optional<LightReceiver> light;
    std::unique_ptr<Process> program;
};

} // namespace

TEST_F(MirrorctlRunServer, GoesOnWhenTheServerIsBack) {
    begin("127.0.58.91", {"--json"});
    for (int i = 0; i < 2; ++i) {
        const auto death = std::chrono::steady_clock::now();
        screen.kill();
        program->waitFor("{\"event\":\"serverGone\"");
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - death;
        EXPECT_LT(taken.count(), 2.0);
        screen.restart();
        screen.fill(i == 0 ? 0x00FF00 : 0xFF0000);
        EXPECT_TRUE(receives(*light, i == 0 ? greenPanel : redPanel));
        program->waitFor("{\"event\":\"resumed\"");
    }
    program->signal(SIGINT);
    test::expectOutput(program->finish(), 0, {"{\"event\":\"stopped\""});
}

TEST_F(MirrorctlRunServer, SaysThatTheServerHasGone) {
    begin("127.0.58.92", {"--seconds", "60"});
    screen.kill();
    program->waitForError(server("has gone; the lights keep their last colours until it is back."));
    screen.restart();
    program->waitForError(server("is back; display "));
    program->signal(SIGTERM);
    test::expectOutput(program->finish(), 0, {"The display server was gone for "});
}

TEST_F(MirrorctlRunServer, IsStoppedWhileTheServerIsAway) {
    begin("127.0.58.93", {"--seconds", "60"});
    screen.kill();
    program->waitForError("has gone");
    program->signal(SIGINT);
    test::expectOutput(program->finish(), 0, {"Stopping: Interrupt.\nMirrored display "});
}

TEST_F(MirrorctlRunServer, EndsInTimeWhileTheServerIsAway) {
    begin("127.0.58.94", {"--seconds", "5"}); // enough for the first frame on a busy machine
    screen.kill();
    EXPECT_EQ(program->finish().status, 0);
}

TEST_F(MirrorctlRunServer, EndsWithTheServerWhenTold) {
    begin("127.0.58.95", {"--once"});
    screen.kill();
    test::expectErrors(program->finish(), 74,
                       {"Mirroring ended: the " + serverName() + " has gone.\n"});
}

TEST_F(MirrorctlRunServer, TellsAHungServerFromADeadOne) {
    begin("127.0.58.96", {"--json"});
    kill(screen.pid(), SIGSTOP);
    program->waitFor("{\"event\":\"serverSilent\"");
    kill(screen.pid(), SIGCONT);
    program->waitFor("{\"event\":\"serverAnswers\"");
    screen.fill(0x00FF00);
    EXPECT_TRUE(receives(*light, greenPanel));
    program->signal(SIGINT);
    const ProcessResult result = program->finish();
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_FALSE(contains(result.out, "serverGone"));
}

TEST_F(MirrorctlRunServer, IsStoppedWhileTheServerHangs) {
    begin("127.0.58.97", {"--seconds", "60"});
    kill(screen.pid(), SIGSTOP);
    program->waitForError(server("does not answer."));
    const auto sent = std::chrono::steady_clock::now();
    program->signal(SIGINT);
    const ProcessResult result = program->finish();
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - sent;
    EXPECT_LT(taken.count(), 2.5); // see IsLeftAtOnceOnASignal
    test::expectOutput(result, 0, {"Mirrored display "});
}

// Frames are counted by their time of arrival, so the program need not wake up for each frame.
TEST_F(MirrorctlRunServer, SleepsBetweenItsReports) {
    begin("127.0.58.98", {"--json"});
    // The context switches of the main thread, which prints the reports.
    const auto switches = [&] { return std::stol(program->status("voluntary_ctxt_switches")); };
    const long before = switches();
    for (int report = 0; report < 2; ++report)
        program->waitFor("\"running\"", program->out().size());
    EXPECT_LT(switches() - before, 20); // it sends 24 frames a second
}
