// Waiting for descriptors, for other threads, and for Ctrl-C and its like.
#pragma once

#include <memory>
#include <optional>
#include <vector>

namespace mirrorctl {

// Returns as soon as one of the descriptors (those that are not -1) can be read or has been hung
// up, with true; after `timeout` seconds, if given, or when interrupted, with false.
bool awaitReadable(const std::vector<int> &descriptors, std::optional<double> timeout);

// A pipe whose ends never make anybody wait, and are closed when another program is started: a
// descriptor that any thread can make readable.
class WakeUp {
public:
    // Throws std::system_error when there is no pipe to be had.
    WakeUp();
    ~WakeUp();
    WakeUp(const WakeUp &) = delete;
    WakeUp &operator=(const WakeUp &) = delete;

    int descriptor() const { return ends[0]; }
    int writeEnd() const { return ends[1]; }
    void signal() const;
    void clear() const; // it is not readable until the next signal()

private:
    int ends[2]; // of a pipe
};

// From its construction on, SIGINT, SIGTERM and SIGHUP are blocked on this thread and on all
// threads started afterwards. A thread of its own takes them, so that they reach no handler: the
// library's would end the process with the signal's number. Construct it before the library starts
// a thread; it lasts for the process. Any thread may ask it.
//
// A SIGHUP or SIGTERM that was ignored before stays ignored, as SIGHUP is under nohup. An ignored
// SIGINT is taken all the same: shells set it so for what a script starts in the background.
class StopSignals {
public:
    // Throws std::system_error when there is no thread or pipe to be had.
    StopSignals();

    // The number of the first signal that has come, or 0. Does not wait.
    int take() const;

    // Readable from the first signal on.
    int descriptor() const;

private:
    struct Shared;
    std::shared_ptr<Shared> shared;
};

} // namespace mirrorctl
