// Calls of the library that the program need not wait for.
//
// While the display server hangs they take seconds. So they are made on a thread of their own, and
// the program's can react to a signal or a deadline meanwhile.
#pragma once

#include "tools/mirrorctl/exitStatus.h"
#include "tools/mirrorctl/waiting.h"

#include <functional>
#include <future>
#include <memory>
#include <thread>

namespace mirrorctl {

// Used by the thread that constructs it. Destroyed before it is done, it leaves its thread behind,
// with all that `work` refers to: only _exit() may follow, since destructors would wait for the
// library.
class LibraryCall {
public:
    // Begins `work`. Throws std::system_error when there is no thread or pipe to be had.
    explicit LibraryCall(std::function<ExitStatus()> work);
    ~LibraryCall();
    LibraryCall(const LibraryCall &) = delete;
    LibraryCall &operator=(const LibraryCall &) = delete;

    bool isDone() const;

    // Readable once it is done.
    int descriptor() const { return done->descriptor(); }

    // Waits for the end and returns what `work` returned, or throws what it threw. Once.
    ExitStatus result();

private:
    std::shared_ptr<WakeUp> done;
    std::future<ExitStatus> outcome;
    std::thread thread;
};

// For how many seconds after a signal calls of the library may go on before the process ends
// without them.
inline constexpr double graceSeconds = 0.25;

// Does `work` on a thread of its own and returns its result. When a signal comes, the work has
// `graceSeconds` to notice it (StopSignals::take()) and to return NothingSent; if it does not
// return, this reports whether the display server does not answer, and ends the process at once
// with NothingSent. Either way it prints "No palette: Interrupt." on standard error, where
// `nothing` is "No palette".
ExitStatus untilSignal(const StopSignals &signals, const char *nothing,
                       std::function<ExitStatus()> work);

} // namespace mirrorctl
