#include "platform/objects/signals.h"

#include <cerrno>
#include <ctime>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace platform {

QuietSignals::QuietSignals() {
    sigset_t quiet;
    sigfillset(&quiet);
    for (int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP}) // abort() lets its own through
        sigdelset(&quiet, fault);
    pthread_sigmask(SIG_BLOCK, &quiet, &before);
}

QuietSignals::~QuietSignals() {
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

namespace {

sigset_t onlySigpipe() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGPIPE);
    return set;
}

bool sigpipePending() {
    sigset_t pending;
    sigemptyset(&pending);
    sigpending(&pending);
    return sigismember(&pending, SIGPIPE) == 1;
}

// Takes the SIGPIPE that waits for this thread if a write of its own has raised it, and none that
// somebody sent to the thread or to the process.
//
// Of each signal at most one waits for a thread and one for the process, and the thread's is taken
// first. So the mark is dropped if one waits for the thread already, and otherwise is what comes
// back; the one that waits for the process is never taken.
void takeOwnSigpipe() {
    sigval mark{};
    mark.sival_ptr = &mark;
    pthread_sigqueue(pthread_self(), SIGPIPE, mark);
    const sigset_t sigpipe = onlySigpipe();
    const timespec atOnce{};
    siginfo_t info{};
    // The C library's own call makes one that was sent to a thread look like that of a write.
    while (syscall(SYS_rt_sigtimedwait, &sigpipe, &info, &atOnce, _NSIG / 8) < 0 &&
           errno == EINTR) {
    }
    const bool isMark = info.si_code == SI_QUEUE && info.si_value.sival_ptr == mark.sival_ptr;
    const bool isOfWrite = info.si_code == SI_USER; // as nothing else that is sent to a thread
    if (!isMark && !isOfWrite)
        pthread_kill(pthread_self(), SIGPIPE);
}

} // namespace

SigpipeGuard::SigpipeGuard() {
    const sigset_t sigpipe = onlySigpipe();
    pthread_sigmask(SIG_BLOCK, &sigpipe, &before);
    wasPending = sigismember(&before, SIGPIPE) == 1 && sigpipePending();
}

SigpipeGuard::~SigpipeGuard() {
    const int savedErrno = errno;
    if (!wasPending && sigpipePending())
        takeOwnSigpipe();
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    errno = savedErrno;
}

} // namespace platform
