#include "platform/objects/signals.h"

#include "tests/platform/streamProbe.h"
#include "tests/support/virtualScreen.h"

#include <CoreGraphics/CoreGraphics.h>
#include <atomic>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

std::atomic<int> received = 0;

void count(int) {
    ++received;
}

// A pipe whose read end is closed.
class BrokenPipe {
public:
    BrokenPipe() {
        int ends[2];
        if (pipe(ends) == 0) {
            close(ends[0]);
            writeEnd = ends[1];
        }
    }
    ~BrokenPipe() { close(writeEnd); }
    BrokenPipe(const BrokenPipe &) = delete;
    BrokenPipe &operator=(const BrokenPipe &) = delete;

    void writeTo() const { EXPECT_EQ(write(writeEnd, "x", 1), -1); }

private:
    int writeEnd = -1;
};

// Sends this process a SIGPIPE from another process; it has been sent when this returns.
void sendFromElsewhere() {
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child == 0)
        _exit(kill(parent, SIGPIPE) == 0 ? 0 : 1);
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_EQ(status, 0);
}

bool isBlocked(int signal) {
    sigset_t mask;
    pthread_sigmask(SIG_BLOCK, nullptr, &mask);
    return sigismember(&mask, signal) == 1;
}

class Signals : public testing::Test {
protected:
    Signals() {
        received = 0;
        before = signal(SIGPIPE, count);
    }
    ~Signals() override { signal(SIGPIPE, before); }

    void (*before)(int);
};

} // namespace

TEST_F(Signals, AGuardSwallowsTheSigpipeOfItsTime) {
    const BrokenPipe broken;
    {
        const platform::SigpipeGuard guard;
        broken.writeTo();
    }
    EXPECT_EQ(received, 0);
    EXPECT_FALSE(isBlocked(SIGPIPE));
    // Later SIGPIPEs still reach the host.
    broken.writeTo();
    EXPECT_EQ(received, 1);
}

TEST_F(Signals, AGuardLeavesAPendingSigpipeToItsOwner) {
    const BrokenPipe broken;
    sigset_t sigpipe;
    sigemptyset(&sigpipe);
    sigaddset(&sigpipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &sigpipe, nullptr);
    broken.writeTo();
    {
        const platform::SigpipeGuard guard;
        broken.writeTo();
    }
    EXPECT_TRUE(isBlocked(SIGPIPE));
    EXPECT_EQ(received, 0);
    pthread_sigmask(SIG_UNBLOCK, &sigpipe, nullptr);
    EXPECT_EQ(received, 1);
}

TEST_F(Signals, AGuardLeavesWhatAnotherProcessSends) {
    for (int round = 1; round <= 20; ++round) {
        {
            const platform::SigpipeGuard guard;
            sendFromElsewhere();
            EXPECT_EQ(received, round - 1);
        }
        EXPECT_EQ(received, round);
    }
    EXPECT_FALSE(isBlocked(SIGPIPE));
}

TEST_F(Signals, AGuardTellsAWritesSigpipeFromOneThatIsSent) {
    const BrokenPipe broken;
    for (const bool sentFirst : {false, true}) {
        received = 0;
        {
            const platform::SigpipeGuard guard;
            if (sentFirst)
                sendFromElsewhere();
            broken.writeTo();
            if (!sentFirst)
                sendFromElsewhere();
        }
        EXPECT_EQ(received, 1) << (sentFirst ? "sent first" : "written first");
    }
}

TEST_F(Signals, AGuardLeavesWhatTheHostSendsItself) {
    {
        const platform::SigpipeGuard guard;
        kill(getpid(), SIGPIPE);
    }
    EXPECT_EQ(received, 1);
    {
        const platform::SigpipeGuard guard;
        pthread_kill(pthread_self(), SIGPIPE);
    }
    EXPECT_EQ(received, 2);
}

TEST_F(Signals, GuardsNest) {
    const BrokenPipe broken;
    {
        const platform::SigpipeGuard outer;
        {
            const platform::SigpipeGuard inner;
            broken.writeTo();
        }
        EXPECT_TRUE(isBlocked(SIGPIPE));
    }
    EXPECT_EQ(received, 0);
    {
        const platform::SigpipeGuard outer;
        {
            const platform::SigpipeGuard inner;
            broken.writeTo();
            sendFromElsewhere();
        }
        EXPECT_EQ(received, 0);
    }
    EXPECT_EQ(received, 1);
}

TEST_F(Signals, OurThreadsTakeNoneButFaults) {
    bool asynchronous = true;
    bool faults = false;
    std::thread thread = platform::startThread([&] {
        for (const int each :
             {SIGINT, SIGTERM, SIGPIPE, SIGHUP, SIGUSR1, SIGALRM, SIGCHLD, SIGABRT})
            asynchronous = asynchronous && isBlocked(each);
        for (const int each : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP})
            faults = faults || isBlocked(each);
    });
    thread.join();
    EXPECT_TRUE(asynchronous);
    EXPECT_FALSE(faults);
    EXPECT_FALSE(isBlocked(SIGINT));
}

TEST_F(Signals, TheHandlersThreadTakesNoneOfTheHosts) {
    const test::UsedScreen screen(64, 48);
    std::atomic<bool> blocked = true;
    test::StreamProbe stream(test::onlyDisplay(), 64, 48);
    stream.onCall = [&](const test::HandlerCall &) {
        for (const int each : {SIGINT, SIGTERM, SIGPIPE})
            if (!isBlocked(each))
                blocked = false;
    };
    ASSERT_TRUE(stream.startAndWait());
    ASSERT_EQ(stream.stop(), kCGErrorSuccess);
    EXPECT_TRUE(blocked);
}

TEST_F(Signals, ADeadServerRaisesNothingInAnyCall) {
    test::UsedScreen screen(64, 48);
    const CGDirectDisplayID id = test::onlyDisplay();
    test::StreamProbe stream(id, 64, 48);
    ASSERT_EQ(stream.start(), kCGErrorSuccess);
    screen.kill();
    std::uint32_t displays = 0;
    CGGetActiveDisplayList(1, nullptr, &displays);
    EXPECT_EQ(CGDisplayCreateImage(id), nullptr);
    EXPECT_EQ(test::StreamProbe(id, 64, 48).get(), nullptr);
    EXPECT_EQ(stream.stop(), kCGErrorSuccess);
    EXPECT_NE(stream.start(), kCGErrorSuccess);
    EXPECT_EQ(received, 0);
    EXPECT_FALSE(isBlocked(SIGPIPE));
}
