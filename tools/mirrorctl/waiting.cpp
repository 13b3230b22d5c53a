#include "tools/mirrorctl/waiting.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <poll.h>
#include <system_error>
#include <thread>

namespace mirrorctl {

bool awaitReadable(const std::vector<int> &descriptors, std::optional<double> timeout) {
    std::vector<pollfd> entries;
    for (const int fd : descriptors)
        if (fd >= 0)
            entries.push_back({fd, POLLIN, 0});
    int milliseconds = -1;
    if (timeout) {
        constexpr double longest = 1e6; // callers repeat a wait that ends too early
        milliseconds = static_cast<int>(std::ceil(std::clamp(*timeout * 1e3, 0.0, longest)));
    }
    const int ready = poll(entries.data(), static_cast<nfds_t>(entries.size()), milliseconds);
    if (ready < 0 && errno != EINTR)
        throw std::system_error(errno, std::generic_category(), "poll");
    return ready > 0;
}

static bool isIgnored(int signum) {
    struct sigaction present;
    return sigaction(signum, nullptr, &present) == 0 && present.sa_handler == SIG_IGN;
}

StopSignals::StopSignals() : shared(std::make_shared<Shared>()) {
    sigset_t blocked;
    sigset_t awaited;
    sigemptyset(&blocked);
    sigemptyset(&awaited);
    for (const int signum : {SIGINT, SIGTERM, SIGHUP}) {
        sigaddset(&blocked, signum);
        if (isIgnored(signum) && signum != SIGINT)
            continue;
        // sigwait() need not return an ignored signal.
        if (isIgnored(signum))
            std::signal(signum, SIG_DFL);
        sigaddset(&awaited, signum);
    }
    pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
    std::thread([awaited, own = shared] {
        int signum = 0;
        while (sigwait(&awaited, &signum) == 0) {
            int none = 0;
            if (own->signum.compare_exchange_strong(none, signum))
                own->wakeUp.signal();
        }
    }).detach();
}

// The systems' own names differ.
const char *StopSignals::firstSignalName() const {
    switch (shared->signum) {
    case SIGTERM:
        return "Terminated";
    case SIGHUP:
        return "Hangup";
    default:
        return "Interrupt";
    }
}

} // namespace mirrorctl
