// Signals as something to poll for, and output that they end.
#pragma once

#include "tools/panelwall/pipe.h"

#include <csignal>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace panelwall {

// While it lives, SIGINT, SIGTERM, SIGHUP, SIGUSR1, SIGWINCH and SIGTSTP are queued here instead of
// acting on the process, and SIGPIPE is ignored. A SIGHUP that was ignored already stays so. The
// destructor gives every signal back. One object per process.
class Signals {
public:
    // Throws std::system_error when no pipe can be made.
    Signals();
    ~Signals();
    Signals(const Signals &) = delete;
    Signals &operator=(const Signals &) = delete;

    // Readable while a signal waits in next().
    int fd() const { return queue.readEnd(); }

    // The oldest signal that has come and was not returned before; never waits.
    std::optional<int> next();

private:
    void take(int signal, void (*handler)(int));

    Pipe queue;
    std::vector<std::pair<int, struct sigaction>> saved;
};

// Whether a few lines can be written now without waiting. A closed reader counts as ready: the
// write then fails at once.
bool canWrite(int fd);

// Writes all of it, waiting as needed; gives up when a signal to end comes meanwhile (SIGINT,
// SIGTERM or SIGHUP). False when not everything was written for another reason (the reader is gone,
// the disk is full).
bool writeAll(int fd, std::string_view text);

} // namespace panelwall
