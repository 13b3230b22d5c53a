#include "tools/mirrorctl/stopSignals.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <pthread.h>
#include <sys/select.h>
#include <sys/time.h>
#include <system_error>

namespace mirrorctl {

static bool isIgnored(int signum) {
    struct sigaction present;
    return sigaction(signum, nullptr, &present) == 0 && present.sa_handler == SIG_IGN;
}

StopSignals::StopSignals() {
    sigset_t held;
    sigemptyset(&held);
    sigemptyset(&awaited);
    for (const int signum : {SIGINT, SIGTERM, SIGHUP}) {
        sigaddset(&held, signum);
        if (!isIgnored(signum))
            sigaddset(&awaited, signum);
    }
    // The alarm of wait(); while ignored it might never become pending.
    std::signal(SIGALRM, SIG_DFL);
    sigaddset(&held, SIGALRM);
    sigaddset(&awaited, SIGALRM);
    pthread_sigmask(SIG_BLOCK, &held, nullptr);
}

int StopSignals::wait(std::optional<double> seconds) const {
    itimerval alarm = {};
    if (seconds) {
        const double whole = std::floor(*seconds);
        alarm.it_value.tv_sec = static_cast<time_t>(whole);
        // An interval of nothing would mean no alarm at all.
        alarm.it_value.tv_usec = static_cast<suseconds_t>((*seconds - whole) * 1e6);
        if (alarm.it_value.tv_sec == 0)
            alarm.it_value.tv_usec = std::max<suseconds_t>(alarm.it_value.tv_usec, 1);
        if (setitimer(ITIMER_REAL, &alarm, nullptr) != 0)
            throw std::system_error(errno, std::generic_category(), "setitimer");
    }
    int signum = 0;
    if (const int error = sigwait(&awaited, &signum))
        throw std::system_error(error, std::generic_category(), "sigwait");
    return signum == SIGALRM ? 0 : signum;
}

static volatile std::sig_atomic_t caught = 0;

static void noteSignal(int signum) {
    caught = signum;
}

int StopSignals::waitForInput(std::initializer_list<int> descriptors,
                              std::optional<double> timeout) const {
    sigset_t during;
    pthread_sigmask(SIG_BLOCK, nullptr, &during);
    for (const int signum : {SIGINT, SIGTERM, SIGHUP}) {
        if (sigismember(&awaited, signum) != 1)
            continue;
        struct sigaction action = {};
        action.sa_handler = noteSignal;
        sigemptyset(&action.sa_mask);
        sigaction(signum, &action, nullptr);
        sigdelset(&during, signum);
    }
    // Held back until now; but a tool that delivers signals by itself may have done so in between.
    if (caught != 0)
        return caught;
    fd_set readable;
    FD_ZERO(&readable);
    int most = -1;
    for (const int fd : descriptors)
        if (fd >= 0 && fd < FD_SETSIZE) {
            FD_SET(fd, &readable);
            most = std::max(most, fd);
        }
    timespec time = {};
    if (timeout) {
        const double whole = std::floor(std::max(*timeout, 0.0));
        time.tv_sec = static_cast<time_t>(whole);
        time.tv_nsec = static_cast<long>((std::max(*timeout, 0.0) - whole) * 1e9);
    }
    if (pselect(most + 1, &readable, nullptr, nullptr, timeout ? &time : nullptr, &during) < 0 &&
        errno != EINTR)
        throw std::system_error(errno, std::generic_category(), "pselect");
    return caught;
}

int StopSignals::take() const {
    sigset_t come;
    if (sigpending(&come) != 0)
        return 0;
    for (const int signum : {SIGINT, SIGTERM, SIGHUP})
        if (sigismember(&come, signum) == 1 && sigismember(&awaited, signum) == 1)
            return wait(std::nullopt);
    return 0;
}

} // namespace mirrorctl
