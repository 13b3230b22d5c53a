// Waiting for Ctrl-C and its like.
#pragma once

#include <csignal>
#include <initializer_list>
#include <optional>

namespace mirrorctl {

// From its construction on, SIGINT, SIGTERM and SIGHUP are held back on this thread and on all
// threads started afterwards, so that they come out of wait() or take() and reach nobody's handler:
// the library's would end the process with the signal's number. Construct it before the library
// starts a thread; it lasts for the process.
//
// A signal that was being ignored, as SIGHUP is under nohup, goes on being of no effect.
class StopSignals {
public:
    StopSignals();

    // Returns with the number of the signal that came, or with 0 after `seconds`, if given, which
    // must be positive. Uses the process's real-time interval timer.
    int wait(std::optional<double> seconds) const;

    // Returns as soon as one of the descriptors (those that are not -1) can be read, with 0; when a
    // signal comes, with its number; after `timeout` seconds, if given, with 0. Installs handlers
    // of its own, after those of the library's run.
    int waitForInput(std::initializer_list<int> descriptors, std::optional<double> timeout) const;

    // The number of a signal that has come, or 0; does not wait. For between two short steps.
    int take() const;

private:
    sigset_t awaited; // what wait() returns for, SIGALRM among it
};

} // namespace mirrorctl
