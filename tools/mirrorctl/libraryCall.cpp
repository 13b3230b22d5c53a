#include "tools/mirrorctl/libraryCall.h"

#include "tools/mirrorctl/server.h"
#include "tools/mirrorctl/waiting.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace mirrorctl {

struct LibraryCall::Shared {
    // Written by the call's thread until it is done, and by nobody afterwards.
    ExitStatus outcome = ExitStatus::done;
    std::optional<std::string> failure; // what was thrown
    std::atomic<bool> isDone = false;
    int ends[2] = {-1, -1}; // of a pipe that can be read once the task is done

    Shared() = default;
    Shared(const Shared &) = delete;
    Shared &operator=(const Shared &) = delete;
    ~Shared() {
        for (const int fd : ends)
            if (fd >= 0)
                close(fd);
    }
};

LibraryCall::LibraryCall(std::function<ExitStatus()> work) : shared(std::make_shared<Shared>()) {
    if (pipe(shared->ends) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe");
    for (const int fd : shared->ends)
        fcntl(fd, F_SETFD, FD_CLOEXEC);
    std::thread([call = shared, work = std::move(work)] {
        try {
            call->outcome = work();
        } catch (const std::exception &error) {
            call->failure = error.what();
        }
        call->isDone = true;
        while (write(call->ends[1], "", 1) < 0 && errno == EINTR) {
        }
    }).detach();
}

bool LibraryCall::isDone() const {
    return shared->isDone;
}

int LibraryCall::descriptor() const {
    return shared->ends[0];
}

ExitStatus LibraryCall::result() const {
    while (!isDone())
        awaitReadable({descriptor()}, std::nullopt);
    if (shared->failure)
        throw std::runtime_error(*shared->failure);
    return shared->outcome;
}

void sayInterrupted(const char *nothing, int signum) {
    static std::atomic_flag isSaid;
    if (!isSaid.test_and_set())
        // NOLINTNEXTLINE(concurrency-mt-unsafe): a known signal has a constant name
        fprintf(stderr, "%s: %s.\n", nothing, strsignal(signum));
}

ExitStatus untilSignal(const StopSignals &signals, const char *nothing,
                       std::function<ExitStatus()> work) {
    ServerWatch watch;
    LibraryCall call(std::move(work));
    int signum = 0;
    while (!call.isDone() && signum == 0)
        signum = signals.waitForInput({call.descriptor()}, std::nullopt);
    if (!call.isDone()) {
        watch.ask();
        awaitReadable({call.descriptor()}, graceSeconds);
    }
    if (call.isDone())
        return call.result();
    sayInterrupted(nothing, signum);
    if (watch.state() != ServerWatch::State::absent && watch.owesAnswer())
        fputs(silenceOfServer().c_str(), stderr);
    endAtOnce(ExitStatus::nothingSent);
}

void endAtOnce(ExitStatus status) {
    _exit(static_cast<int>(status));
}

} // namespace mirrorctl
