// Library calls on a separate thread.
//
// A call takes seconds while the display server hangs. Meanwhile the program's own thread can react
// to a signal or a deadline.
#pragma once

#include "tools/mirrorctl/exitStatus.h"
#include "tools/mirrorctl/waiting.h"

#include <functional>
#include <future>
#include <memory>
#include <thread>

namespace mirrorctl {

// Used by the thread that constructs it. If it is destroyed before the work is done, the thread
// keeps running and using everything that `work` refers to. Then only _exit() may follow, since
// destructors would wait for the library.
class LibraryCall {
public:
    // Starts `work`. Throws std::system_error if no thread or pipe can be created.
    explicit LibraryCall(std::function<ExitStatus()> work);
    ~LibraryCall();
    LibraryCall(const LibraryCall &) = delete;
    LibraryCall &operator=(const LibraryCall &) = delete;

    bool isDone() const { return awaitReadable({descriptor()}, 0); }

    // Readable once the work is done.
    int descriptor() const { return done->descriptor(); }

    // Waits for `work` and returns its result, or throws its exception. Call it only once.
    ExitStatus result();

private:
    std::shared_ptr<WakeUp> done;
    std::future<ExitStatus> outcome;
    std::thread thread;
};

// How long library calls may go on after a signal, in seconds, before the process ends without
// waiting for them.
inline constexpr double graceSeconds = 0.5;

// Runs `work` on a separate thread and returns its result. When a signal comes, the work has
// `graceSeconds` to notice it (StopSignals::firstSignal()) and to return NothingSent. If it does
// not return, this prints whether the display server does not answer, and ends the process at once
// with NothingSent. In both cases it prints "No palette: Interrupt." on standard error, where
// `nothing` is "No palette".
ExitStatus untilSignal(const StopSignals &signals, const char *nothing,
                       std::function<ExitStatus()> work);

} // namespace mirrorctl
