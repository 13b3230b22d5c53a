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
    for (int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP}) // abort() unblocks SIGABRT itself
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

// Consumes the SIGPIPE that is pending for this thread if one of its own writes raised it, but none
// that was sent to the thread or to the process.
//
// Of each signal at most one is pending for a thread and one for the process, and the thread's is
// consumed first. So the mark that is queued here is dropped if a SIGPIPE is already pending for
// the thread, and otherwise comes back itself. The process's SIGPIPE is never consumed.
void takeOwnSigpipe() {
    sigval mark{};
    mark.sival_ptr = &mark;
    pthread_sigqueue(pthread_self(), SIGPIPE, mark);
    const sigset_t sigpipe = onlySigpipe();
    const timespec atOnce{};
    siginfo_t info{};
    // The C library's sigtimedwait() makes a signal sent to a thread look like a write's.
    while (syscall(SYS_rt_sigtimedwait, &sigpipe, &info, &atOnce, _NSIG / 8) < 0 &&
           errno == EINTR) {
    }
    const bool isMark = info.si_code == SI_QUEUE && info.si_value.sival_ptr == mark.sival_ptr;
    const bool isOfWrite = info.si_code == SI_USER; // no signal sent to a thread has this code
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
