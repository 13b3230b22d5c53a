#include "tests/mirror/manager.h"

#include <csignal>

namespace {

constexpr int handledSignals[] = {SIGINT, SIGABRT, SIGTERM, SIGBUS, SIGFPE, SIGPIPE, SIGSEGV};

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

    static void expectOurs() {
        for (const int number : handledSignals) {
            struct sigaction now;
            sigaction(number, nullptr, &now);
            EXPECT_EQ(now.sa_handler, &MirrorManager::static_signalHandler) << number;
        }
    }

private:
    struct sigaction before[NSIG];
};

TEST_F(Handlers, AreInstalledAtEveryRunAndStayAfterIt) {
    ASSERT_EQ(configure(document("[" + device("127.0.59.3", 1, "[]") + "]")), 1);
    for (int run = 0; run < 3; ++run) {
        for (const int number : handledSignals)
            std::signal(number, SIG_DFL);
        ASSERT_EQ(mirrorManager.startMirror(), 1);
        expectOurs();
        ASSERT_EQ(mirrorManager.stopMirror(), 1);
        expectOurs();
    }
}

} // namespace
