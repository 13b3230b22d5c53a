#include "tools/mirrorctl/stopSignals.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <pthread.h>
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
