// Waits for descriptors, for other threads, and for signals such as Ctrl-C.
#pragma once

#include "tools/lights/wakeUp.h"

#include <atomic>
#include <memory>
#include <optional>
#include <vector>

namespace mirrorctl {

using lights::WakeUp;

// Waits until one of the descriptors (-1 is skipped) is readable or hung up, and returns true;
// returns false after `timeout` seconds, if given, or when interrupted.
bool awaitReadable(const std::vector<int> &descriptors, std::optional<double> timeout);

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
    int firstSignal() const { return shared->signum; }

    // Its name: "Interrupt", "Terminated" or "Hangup".
    const char *firstSignalName() const;

    // Readable from the first signal on.
    int descriptor() const { return shared->wakeUp.descriptor(); }

private:
    // Shared with the thread that takes the signals.
    struct Shared {
        std::atomic<int> signum = 0;
        WakeUp wakeUp;
    };
    std::shared_ptr<Shared> shared;
};

} // namespace mirrorctl
