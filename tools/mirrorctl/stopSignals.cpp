#include "tools/mirrorctl/stopSignals.h"

#include "tools/mirrorctl/waiting.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <vector>

namespace mirrorctl {

// Shared with the thread that takes the signals, which stays behind at the end of the process.
struct StopSignals::Come {
    std::atomic<int> signum = 0;
    int ends[2] = {-1, -1}; // of a pipe that can be read from the first signal on
};

static bool isIgnored(int signum) {
    struct sigaction present;
    return sigaction(signum, nullptr, &present) == 0 && present.sa_handler == SIG_IGN;
}

StopSignals::StopSignals() : come(std::make_shared<Come>()) {
    if (pipe(come->ends) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe");
    for (const int fd : come->ends)
        fcntl(fd, F_SETFD, FD_CLOEXEC);
    sigset_t held;
    sigset_t awaited;
    sigemptyset(&held);
    sigemptyset(&awaited);
    bool isAnyAwaited = false;
    for (const int signum : {SIGINT, SIGTERM, SIGHUP}) {
        sigaddset(&held, signum);
        if (isIgnored(signum)) {
            if (signum != SIGINT)
                continue;
            // An ignored signal need not reach somebody who waits for it.
            signal(signum, SIG_DFL);
        }
        sigaddset(&awaited, signum);
        isAnyAwaited = true;
    }
    pthread_sigmask(SIG_BLOCK, &held, nullptr);
    if (!isAnyAwaited)
        return;
    std::thread([awaited, shared = come] {
        int signum = 0;
        while (sigwait(&awaited, &signum) == 0) {
            int none = 0;
            if (shared->signum.compare_exchange_strong(none, signum))
                while (write(shared->ends[1], "", 1) < 0 && errno == EINTR) {
                }
        }
    }).detach();
}

int StopSignals::take() const {
    return come->signum.load();
}

int StopSignals::waitForInput(std::initializer_list<int> descriptors,
                              std::optional<double> timeout) const {
    std::vector<int> all = descriptors;
    all.push_back(come->ends[0]);
    awaitReadable(all, timeout);
    return take();
}

} // namespace mirrorctl
