#include "mirror/sharedFlag.h"
#include "tests/mirror/manager.h"

#include <csignal>
#include <cstdlib>
#include <unistd.h>

namespace {

constexpr int handledSignals[] = {SIGINT, SIGABRT, SIGTERM, SIGBUS, SIGFPE, SIGPIPE, SIGSEGV};

std::vector<int> *installed = nullptr; // if not null, records the calls of signal()

} // namespace

// Replaces the C library's function.
extern "C" sighandler_t signal(int number, sighandler_t handler) noexcept {
    if (installed)
        installed->push_back(number);
    struct sigaction action = {}, before = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    return sigaction(number, &action, &before) == 0 ? before.sa_handler : SIG_ERR;
}

namespace {

// Restores the process's signal handlers after each test.
class Handlers : public ManagerTest {
protected:
    Handlers() {
        for (const int number : handledSignals)
            sigaction(number, nullptr, &before[number]);
    }
    ~Handlers() override {
        mirrorManager.stopMirror();
        for (const int number : handledSignals)
            sigaction(number, &before[number], nullptr);
    }

    void SetUp() override { ASSERT_EQ(setDevices({{"127.0.59.3", 1}}), 1); }

    // A host's language runtime may give its threads alternate signal stacks, because their own
    // stacks have no room for a handler.
    static void expectOurs() {
        for (const int number : handledSignals) {
            struct sigaction now;
            sigaction(number, nullptr, &now);
            EXPECT_EQ(now.sa_handler, &MirrorManager::static_signalHandler) << number;
            EXPECT_TRUE(now.sa_flags & SA_ONSTACK) << number;
            EXPECT_TRUE(now.sa_flags & SA_RESTART) << number;
        }
    }

private:
    struct sigaction before[NSIG];
};

TEST_F(Handlers, AreInstalledAtEveryRunAndStayAfterIt) {
    for (const bool resetFirst : {true, true, false}) {
        if (resetFirst)
            for (const int number : handledSignals)
                std::signal(number, SIG_DFL);
        ASSERT_EQ(mirrorManager.startMirror(), 1);
        expectOurs();
        ASSERT_EQ(mirrorManager.stopMirror(), 1);
        expectOurs();
    }
}

TEST_F(Handlers, AreInstalledInOrder) {
    std::vector<int> numbers;
    installed = &numbers;
    EXPECT_EQ(mirrorManager.startMirror(), 1);
    installed = nullptr;
    EXPECT_EQ(numbers, std::vector<int>(std::begin(handledSignals), std::end(handledSignals)));
}

// The exit status of the child when the run has not ended before the process.
constexpr int outOfOrder = 99;

// Ends the process by a signal during a run; the run must be over when exit handlers run.
[[noreturn]] void endInMidRun(int number) {
    mirrorManager.startMirror();
    std::atexit([] {
        const auto &calls = fake::platform().calls;
        const bool stopped = !readFlag(mirrorManager.running) &&
                             !mirrorManager.mirrorThread.joinable() && !calls.empty() &&
                             calls.back() == "CGDisplayStreamStop";
        if (!stopped)
            _exit(outOfOrder);
    });
    dup2(STDERR_FILENO, STDOUT_FILENO); // death tests read standard error
    raise(number);
    _exit(outOfOrder);
}

class HandlersDeathTest : public Handlers {
protected:
    void SetUp() override {
#if __has_feature(thread_sanitizer)
        GTEST_SKIP() << "the thread sanitizer knows no threads in a child of a fork";
#endif
        Handlers::SetUp();
    }
};

// The order is: the flag, the join, the exit.
TEST_F(HandlersDeathTest, EndTheRunBeforeTheProcess) {
    for (const int number : handledSignals)
        EXPECT_EXIT(endInMidRun(number), testing::ExitedWithCode(number), "^$") << number;
}

// The handler waits as a join would; its own limit is longer than this stop takes.
TEST_F(HandlersDeathTest, WaitForAStreamThatIsSlowToStop) {
    fake::platform().stopTime = std::chrono::seconds(8);
    EXPECT_EXIT(endInMidRun(SIGTERM), testing::ExitedWithCode(SIGTERM), "^$");
}

} // namespace
