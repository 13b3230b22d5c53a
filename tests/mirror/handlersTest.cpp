#include "mirror/sharedFlag.h"
#include "tests/mirror/manager.h"

#include <csignal>
#include <cstdlib>
#include <unistd.h>

namespace {

constexpr int handledSignals[] = {SIGINT, SIGABRT, SIGTERM, SIGBUS, SIGFPE, SIGPIPE, SIGSEGV};

std::vector<int> *installed = nullptr; // the calls of signal(), where somebody wants to know

} // namespace

// Stands before the C library's own.
extern "C" sighandler_t signal(int number, sighandler_t handler) noexcept {
    if (installed)
        installed->push_back(number);
    struct sigaction action = {}, before = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    return sigaction(number, &action, &before) == 0 ? before.sa_handler : SIG_ERR;
}

namespace {

// Gives the process its own handlers back.
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

    // A runtime may give its threads stacks of their own to run handlers on, because what the
    // thread ran on has no room for one.
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

// What an exit status stands for in a child that a signal has ended during a run.
constexpr int outOfOrder = 99;

// Ends the process by a signal in mid-run; whoever runs at its exit finds the run over.
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
    dup2(STDERR_FILENO, STDOUT_FILENO); // where a death test looks
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

// First the flag, then the join, then the exit.
TEST_F(HandlersDeathTest, EndTheRunBeforeTheProcess) {
    for (const int number : handledSignals)
        EXPECT_EXIT(endInMidRun(number), testing::ExitedWithCode(number), "^$") << number;
}

// As a join would, however long the system takes.
TEST_F(HandlersDeathTest, WaitForAStreamThatIsSlowToStop) {
    fake::platform().stopTime = std::chrono::seconds(8);
    EXPECT_EXIT(endInMidRun(SIGTERM), testing::ExitedWithCode(SIGTERM), "^$");
}

} // namespace
