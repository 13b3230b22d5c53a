// Hosts that load the library themselves: unloading in mid-run, and the signals.
#include "mirror/mirrorInterface.h"
#include "tests/endToEnd/exitStatus.h"
#include "tests/endToEnd/lightSetup.h"
#include "tests/support/virtualScreen.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// A child with its standard output at the other end of a pipe.
class Child {
public:
    explicit Child(std::vector<std::string> command) {
        int ends[2];
        EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
        std::vector<char *> arguments;
        for (std::string &word : command)
            arguments.push_back(word.data());
        arguments.push_back(nullptr);
        pid = fork();
        if (pid == 0) {
            dup2(ends[1], STDOUT_FILENO);
            execv(arguments[0], arguments.data());
            _exit(127);
        }
        close(ends[1]);
        output = ends[0];
    }
    ~Child() {
        if (pid > 0) {
            ::kill(pid, SIGKILL);
            waitpid(pid, nullptr, 0);
        }
        close(output);
    }
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;

    // Reads until the output holds `text`; false when the child closes it first or takes too long.
    bool says(const std::string &text) {
        while (said.find(text) == std::string::npos)
            if (!read())
                return false;
        return true;
    }

    // A fault goes to the main thread, as one of its own would: sent to the process, it may come to
    // a thread of the stream that holds what the stop needs.
    void signal(int number) const {
        if (number == SIGSEGV || number == SIGBUS || number == SIGFPE)
            tgkill(pid, pid, number);
        else
            ::kill(pid, number);
    }

    // Waits for the end. The exit status, or minus the signal that killed it: one that takes too
    // long is killed.
    int end() {
        while (read()) {
        }
        if (silent)
            ::kill(pid, SIGKILL);
        int status = 0;
        waitpid(pid, &status, 0);
        pid = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

    std::string said;

private:
    bool read() {
        pollfd waiting{output, POLLIN, 0};
        // The library's handler waits half a minute for what its thread may hold.
        silent = poll(&waiting, 1, 60000) != 1;
        if (silent)
            return false;
        char bytes[4096];
        const ssize_t got = ::read(output, bytes, sizeof bytes);
        if (got > 0)
            said.append(bytes, static_cast<std::size_t>(got));
        return got > 0;
    }

    pid_t pid = -1;
    int output = -1;
    bool silent = false; // for a minute
};

class ChildTest : public testing::Test {
protected:
    void SetUp() override {
        screen.use();
        // What an unloaded library leaves behind by design cannot be named any more, and an exit
        // inside a handler leaves everything.
        addOption("ASAN_OPTIONS", "detect_leaks=0");
        config = test::documentOf(test::displayIDs().at(0), 0,
                                  {{"127.0.56.1", 1, 0, 0.2, {{1, 40, 40}}}});
    }

    test::VirtualScreen screen{200, 100};
    static std::string inPaletteMode() {
        return test::documentOf(test::displayIDs().at(0), 3,
                                {{"127.0.56.1", 1, 0, 0.2, {{1, 40, 40}}}});
    }

    static void addOption(const char *variable, const char *option) {
        const char *options = getenv(variable);
        setenv(variable, (std::string(options ? options : "") + ":" + option).c_str(), 1);
    }

    // The exit may come between the end of a thread and its join.
    static void expectUnjoinedThreads() { addOption("TSAN_OPTIONS", "report_thread_leaks=0"); }

    // What such a host has said by its end.
    static std::string interruptInPaletteMode(const char *what, int round) {
        expectUnjoinedThreads();
        Child host({SIGNALHOST, MIRROR_LIBRARY, inPaletteMode(), what});
        EXPECT_TRUE(host.says("ready\n")) << host.said;
        usleep(static_cast<useconds_t>(round * 7919)); // spreads the moments; nothing is awaited
        host.signal(SIGINT);
        EXPECT_EQ(host.end(), exitStatusOf(SIGINT)) << host.said;
        return host.said;
    }

    std::string config;
};

TEST_F(ChildTest, UnloadInMidRun) {
    Child host({UNLOADHOST, MIRROR_LIBRARY, config, "20", "60221"});
    EXPECT_EQ(host.end(), 0) << host.said;
}

class SignalTest : public ChildTest, public testing::WithParamInterface<int> {
protected:
    void SetUp() override {
#if __has_feature(thread_sanitizer)
        if (GetParam() != SIGINT && GetParam() != SIGTERM)
            GTEST_SKIP() << "the thread sanitizer takes this one for a fault of the thread's own";
#endif
        ChildTest::SetUp();
        expectUnjoinedThreads();
    }
};

TEST_P(SignalTest, EndsTheRunAndExitsWithItsNumber) {
    Child host({SIGNALHOST, MIRROR_LIBRARY, config, "wait"});
    ASSERT_TRUE(host.says("ready\n")) << host.said;
    host.signal(GetParam());
    EXPECT_EQ(host.end(), exitStatusOf(GetParam()));
    // The system may hand the signal to the mirroring thread, which cannot join itself.
    EXPECT_TRUE(host.said == "ready\n" || host.said == "ready\nError stopping mirror\n")
        << host.said;
}

TEST_P(SignalTest, StaysHandledAfterARun) {
    Child host({SIGNALHOST, MIRROR_LIBRARY, config, "after"});
    ASSERT_TRUE(host.says("ready\n")) << host.said;
    host.signal(GetParam());
    EXPECT_EQ(host.end(), exitStatusOf(GetParam()));
    EXPECT_EQ(host.said, "ready\n");
}

INSTANTIATE_TEST_SUITE_P(All, SignalTest,
                         testing::Values(SIGINT, SIGABRT, SIGTERM, SIGBUS, SIGFPE, SIGPIPE,
                                         SIGSEGV),
                         [](const testing::TestParamInfo<int> &info) {
                             return std::string("SIG") + sigabbrev_np(info.param);
                         });

TEST_F(ChildTest, FaultOnTheMirroringThreadItself) {
#if __has_feature(thread_sanitizer)
    GTEST_SKIP() << "the thread sanitizer knows no thread that tries to join itself";
#endif
    Child host({SIGNALHOST, MIRROR_LIBRARY, config, "fault"});
    EXPECT_EQ(host.end(), exitStatusOf(SIGSEGV));
    // The thread cannot join itself, says so once, and the exit goes on.
    const std::string message = "Error stopping mirror\n";
    const std::size_t at = host.said.find(message);
    ASSERT_NE(at, std::string::npos) << host.said;
    EXPECT_EQ(host.said.find(message, at + 1), std::string::npos) << host.said;
}

TEST_F(ChildTest, FaultOnAStackWithoutRoomForAHandler) {
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
    GTEST_SKIP() << "the sanitizers need more stack than the host gives";
#endif
    Child host({SIGNALHOST, MIRROR_LIBRARY, config, "overflow"});
    EXPECT_EQ(host.end(), exitStatusOf(SIGSEGV));
    EXPECT_EQ(host.said, "");
}

// The signal may arrive while the host is inside a start, a stop or a configuration.
TEST_F(ChildTest, InterruptAtAnyMoment) {
#if __has_feature(thread_sanitizer)
    GTEST_SKIP() << "the thread sanitizer knows no join inside a join";
#endif
    for (int round = 0; round < 20; ++round) {
        Child host({SIGNALHOST, MIRROR_LIBRARY, config, "cycle"});
        ASSERT_TRUE(host.says("ready\n")) << host.said;
        usleep(static_cast<useconds_t>(round * 7919)); // spreads the moments; nothing is awaited
        host.signal(SIGINT);
        ASSERT_EQ(host.end(), exitStatusOf(SIGINT)) << host.said;
    }
}

// The interrupted thread may hold the lock that the mode wants.
TEST_F(ChildTest, InterruptWhileAskingForThePalette) {
    for (int round = 0; round < 20; ++round)
        interruptInPaletteMode("ask", round);
}

// The process ends on one thread while another is inside the library.
TEST_F(ChildTest, InterruptOnTheMirroringThreadWhileAskingForThePalette) {
    for (int round = 0; round < 10; ++round)
        EXPECT_NE(interruptInPaletteMode("elsewhere", round).find("Error stopping mirror"),
                  std::string::npos);
}

TEST_F(ChildTest, InterruptBeforeTheThreadIsMade) {
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
    GTEST_SKIP() << "the sanitizers have a pthread_create of their own";
#endif
    Child host({SIGNALHOST, MIRROR_LIBRARY, config, "again"});
    EXPECT_EQ(host.end(), exitStatusOf(SIGINT)) << host.said;
}

// A thread that has not yet noted that it is the mirroring thread is spared until it has.
TEST_F(ChildTest, InterruptOnTheThreadThatIsJustMade) {
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
    GTEST_SKIP() << "the sanitizers have a pthread_create of their own";
#endif
    Child host({SIGNALHOST, MIRROR_LIBRARY, config, "newborn"});
    EXPECT_EQ(host.end(), exitStatusOf(SIGINT)) << host.said;
    EXPECT_EQ(host.said, "Error stopping mirror\n"); // it cannot join itself
}

} // namespace
