// Hosts that load the library themselves: unloading during a run, and signals.
#include "tests/endToEnd/exitStatus.h"
#include "tests/endToEnd/lightSetup.h"
#include "tests/support/process.h"
#include "tests/support/virtualScreen.h"

#include <csignal>
#include <cstdlib>
#include <unistd.h>

using test::Process;

namespace {

// A fault signal goes to the main thread, as if that thread had caused it: sent to the process, it
// may reach a thread of the stream that holds something the stop needs.
void sendSignal(const Process &host, int number) {
    if (number == SIGSEGV || number == SIGBUS || number == SIGFPE)
        tgkill(host.pid(), host.pid(), number);
    else
        host.signal(number);
}

class ChildTest : public testing::Test {
protected:
    void SetUp() override {
        // The leak checker cannot symbolise what an unloaded library leaves allocated by design,
        // and an exit inside a handler frees nothing.
        addOption("ASAN_OPTIONS", "detect_leaks=0");
    }

    static std::string configIn(int mode) {
        return test::documentOf(test::displayIDs().at(0), mode,
                                {{"127.0.56.1", 1, 0, 0.2, {{1, 40, 40}}}});
    }

    static void addOption(const char *variable, const char *option) {
        const char *options = getenv(variable);
        setenv(variable, (std::string(options ? options : "") + ":" + option).c_str(), 1);
    }

    // The process may exit after a thread has ended and before it is joined.
    static void expectUnjoinedThreads() { addOption("TSAN_OPTIONS", "report_thread_leaks=0"); }

    // Interrupts a host at a moment that depends on `round`; returns the host's output.
    static std::string interrupt(const char *what, const std::string &config, int round) {
        Process host({SIGNALHOST, MIRROR_LIBRARY, config, what});
        host.waitFor("ready\n");
        usleep(static_cast<useconds_t>(round * 7919)); // varies the moment; no event is awaited
        sendSignal(host, SIGINT);
        EXPECT_EQ(host.finish().status, exitStatusOf(SIGINT)) << host.out();
        return host.out();
    }

    test::UsedScreen screen{200, 100};
    const std::string config = configIn(0);
};

TEST_F(ChildTest, UnloadInMidRun) {
    Process host({UNLOADHOST, MIRROR_LIBRARY, config, "20", "60221"});
    EXPECT_EQ(host.finish().status, 0) << host.out();
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
    Process host({SIGNALHOST, MIRROR_LIBRARY, config, "wait"});
    host.waitFor("ready\n");
    sendSignal(host, GetParam());
    EXPECT_EQ(host.finish().status, exitStatusOf(GetParam()));
    // The system may hand the signal to the mirroring thread, which cannot join itself.
    EXPECT_TRUE(host.out() == "ready\n" || host.out() == "ready\nError stopping mirror\n")
        << host.out();
}

TEST_P(SignalTest, StaysHandledAfterARun) {
    Process host({SIGNALHOST, MIRROR_LIBRARY, config, "after"});
    host.waitFor("ready\n");
    sendSignal(host, GetParam());
    EXPECT_EQ(host.finish().status, exitStatusOf(GetParam()));
    EXPECT_EQ(host.out(), "ready\n");
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
    Process host({SIGNALHOST, MIRROR_LIBRARY, config, "fault"});
    EXPECT_EQ(host.finish().status, exitStatusOf(SIGSEGV));
    // The thread cannot join itself; it reports this once, and the exit continues.
    const std::string message = "Error stopping mirror\n";
    const std::size_t at = host.out().find(message);
    ASSERT_NE(at, std::string::npos) << host.out();
    EXPECT_EQ(host.out().find(message, at + 1), std::string::npos) << host.out();
}

TEST_F(ChildTest, FaultOnAStackWithoutRoomForAHandler) {
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
    GTEST_SKIP() << "the sanitizers need more stack than the host gives";
#endif
    Process host({SIGNALHOST, MIRROR_LIBRARY, config, "overflow"});
    EXPECT_EQ(host.finish().status, exitStatusOf(SIGSEGV));
    EXPECT_EQ(host.out(), "");
}

// The signal may arrive while the host is inside a start, a stop or a configuration.
TEST_F(ChildTest, InterruptAtAnyMoment) {
#if __has_feature(thread_sanitizer)
    GTEST_SKIP() << "the thread sanitizer knows no join inside a join";
#endif
    for (int round = 0; round < 20 && !HasFailure(); ++round)
        interrupt("cycle", config, round);
}

// The interrupted thread may hold the lock that the mode waits for.
TEST_F(ChildTest, InterruptWhileAskingForThePalette) {
    expectUnjoinedThreads();
    for (int round = 0; round < 20; ++round)
        interrupt("ask", configIn(3), round);
}

// The process ends on one thread while another is inside the library.
TEST_F(ChildTest, InterruptOnTheMirroringThreadWhileAskingForThePalette) {
    expectUnjoinedThreads();
    for (int round = 0; round < 10; ++round)
        EXPECT_NE(interrupt("elsewhere", configIn(3), round).find("Error stopping mirror"),
                  std::string::npos);
}

TEST_F(ChildTest, InterruptBeforeTheThreadIsMade) {
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
    GTEST_SKIP() << "the sanitizers have a pthread_create of their own";
#endif
    Process host({SIGNALHOST, MIRROR_LIBRARY, config, "again"});
    EXPECT_EQ(host.finish().status, exitStatusOf(SIGINT)) << host.out();
}

// Signals are blocked on a new thread until it has recorded that it is the mirroring thread.
TEST_F(ChildTest, InterruptOnTheThreadThatIsJustMade) {
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
    GTEST_SKIP() << "the sanitizers have a pthread_create of their own";
#endif
    Process host({SIGNALHOST, MIRROR_LIBRARY, config, "newborn"});
    EXPECT_EQ(host.finish().status, exitStatusOf(SIGINT)) << host.out();
    EXPECT_EQ(host.out(), "Error stopping mirror\n"); // the thread cannot join itself
}

} // namespace
