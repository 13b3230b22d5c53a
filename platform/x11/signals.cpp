#include "platform/x11/signals.h"

#include <cerrno>
#include <ctime>
#include <pthread.h>

namespace x11 {

QuietSignals::QuietSignals() {
    sigset_t quiet;
    sigfillset(&quiet);
    for (int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGABRT, SIGILL, SIGTRAP})
        sigdelset(&quiet, fault);
    pthread_sigmask(SIG_BLOCK, &quiet, &before);
}

QuietSignals::~QuietSignals() {
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

namespace {

bool sigpipePending() {
    sigset_t pending;
    sigemptyset(&pending);
    sigpending(&pending);
    return sigismember(&pending, SIGPIPE) == 1;
}

} // namespace

SigpipeGuard::SigpipeGuard() : wasPending(sigpipePending()) {
    sigset_t sigpipe;
    sigemptyset(&sigpipe);
    sigaddset(&sigpipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &sigpipe, &before);
}

SigpipeGuard::~SigpipeGuard() {
    const int savedErrno = errno;
    if (!wasPending && sigpipePending()) {
        sigset_t sigpipe;
        sigemptyset(&sigpipe);
        sigaddset(&sigpipe, SIGPIPE);
        const timespec atOnce{};
        while (sigtimedwait(&sigpipe, nullptr, &atOnce) < 0 && errno == EINTR) {
        }
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    errno = savedErrno;
}

} // namespace x11
