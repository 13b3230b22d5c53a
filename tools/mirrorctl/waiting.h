// Waits for descriptors, for other threads, and for signals such as Ctrl-C.
#pragma once

#include <memory>
#include <optional>
#include <vector>

namespace mirrorctl {

// Waits until one of the descriptors (-1 is skipped) is readable or hung up, and returns true;
// returns false after `timeout` seconds, if given, or when interrupted.
bool awaitReadable(const std::vector<int> &descriptors, std::optional<double> timeout);

// A descriptor that any thread can make readable: a pipe that never blocks and is closed on exec.
class WakeUp {
public:
    // Throws std::system_error if no pipe can be created.
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
// threads started afterwards. A separate thread takes them, so that no handler runs: the library's
// would end the process with the signal's number. Construct it before the library starts a thread;
// the thread runs until the process ends. Callable from any thread.
//
// A SIGHUP or SIGTERM that was ignored before stays ignored, as SIGHUP is under nohup. An ignored
// SIGINT is still taken: shells ignore it for background commands of scripts.
class StopSignals {
public:
    // Throws std::system_error if no thread or pipe can be created.
    StopSignals();

    // The number of the first signal that has come, or 0. Does not wait.
    int firstSignal() const;

    // Readable from the first signal on.
    int descriptor() const;

private:
    struct Shared;
    std::shared_ptr<Shared> shared;
};

} // namespace mirrorctl
