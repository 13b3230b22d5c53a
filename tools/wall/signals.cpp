#include "tools/wall/signals.h"

#include <atomic>
#include <cerrno>
#include <poll.h>
#include <unistd.h>

namespace panelwall {

// The state that handlers use; lock-free, as they require.
static std::atomic<int> pipeForHandler{-1};
static std::atomic<int> ends{0};
static_assert(std::atomic<int>::is_always_lock_free);

static void enqueue(int signal) {
    const int savedErrno = errno;
    if (signal == SIGINT || signal == SIGTERM || signal == SIGHUP)
        ++ends;
    // A full pipe already holds thousands of unread signals, so losing this one does no harm.
    const auto byte = static_cast<unsigned char>(signal);
    [[maybe_unused]] const ssize_t written = write(pipeForHandler, &byte, 1);
    errno = savedErrno;
}

Signals::Signals() {
    pipeForHandler = queue.writeEnd();
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGUSR1, SIGWINCH, SIGTSTP})
        take(signal, enqueue);
    take(SIGPIPE, SIG_IGN);
}

Signals::~Signals() {
    for (const auto &[signal, action] : saved)
        sigaction(signal, &action, nullptr);
    pipeForHandler = -1;
}

void Signals::take(int signal, void (*handler)(int)) {
    struct sigaction before {};
    sigaction(signal, nullptr, &before);
    if (signal == SIGHUP && before.sa_handler == SIG_IGN)
        return;
    saved.emplace_back(signal, before);
    // Without SA_RESTART, so that a signal interrupts a write to a halted terminal.
    struct sigaction action {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
}

std::optional<int> Signals::next() {
    unsigned char byte;
    if (read(queue.descriptor(), &byte, 1) != 1)
        return std::nullopt;
    return byte;
}

bool canWrite(int fd) {
    pollfd waiting{fd, POLLOUT, 0};
    return poll(&waiting, 1, 0) > 0;
}

bool writeAll(int fd, std::string_view text) {
    const int endsBefore = ends;
    while (!text.empty()) {
        const ssize_t written = write(fd, text.data(), text.size());
        if (written > 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EAGAIN) {
            pollfd waiting{fd, POLLOUT, 0};
            poll(&waiting, 1, -1);
        } else if (errno != EINTR) {
            return false;
        }
        if (ends != endsBefore)
            return true;
    }
    return true;
}

} // namespace panelwall
