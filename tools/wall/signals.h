// Signals as a descriptor to poll, and output that signals interrupt.
#pragma once

#include "tools/lights/wakeUp.h"

#include <csignal>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace panelwall {

// While it lives, SIGINT, SIGTERM, SIGHUP, SIGUSR1, SIGWINCH and SIGTSTP are queued here instead of
// acting on the process, and SIGPIPE is ignored. A SIGHUP that was already ignored stays ignored.
// The destructor restores the earlier actions. One object per process.
class Signals {
public:
    // Throws std::system_error when the pipe cannot be created.
    Signals();
    ~Signals();
    Signals(const Signals &) = delete;
    Signals &operator=(const Signals &) = delete;

    // Readable while next() has a signal to return.
    int fd() const { return queue.descriptor(); }

    // Removes and returns the oldest queued signal; none if the queue is empty. Never waits.
    std::optional<int> next();

private:
    void take(int signal, void (*handler)(int));

    lights::WakeUp queue;
    std::vector<std::pair<int, struct sigaction>> saved;
};

// Whether a few lines can be written now without waiting. A closed reader counts as ready: the
// write then fails at once.
bool canWrite(int fd);

// Writes the whole text, waiting as needed; stops early, and still returns true, when SIGINT,
// SIGTERM or SIGHUP arrives. False when writing fails for another reason (the reader is gone, the
// disk is full).
bool writeAll(int fd, std::string_view text);

} // namespace panelwall
