// Calls of the library that the program need not wait for.
//
// On a system whose display server hangs they take seconds. So they are made on a thread of their
// own, and the program's can heed a signal or a clock meanwhile.
#pragma once

#include "tools/mirrorctl/exitStatus.h"
#include "tools/mirrorctl/stopSignals.h"

#include <functional>
#include <memory>

namespace mirrorctl {

// The thread that constructs it asks it. Discarded before it is done, it leaves its thread behind,
// with all that `work` refers to: only endAtOnce() may follow.
class LibraryCall {
public:
    // Begins `work`. Throws std::system_error when there is no thread or pipe to be had.
    explicit LibraryCall(std::function<ExitStatus()> work);

    bool isDone() const;

    // Readable once it is done.
    int descriptor() const;

    // What came of the work: waits for its end. What that threw is thrown here, with the same words
    // as a std::runtime_error.
    ExitStatus result() const;

private:
    struct Shared;
    std::shared_ptr<Shared> shared;
};

// For how many seconds after a signal calls of the library may go on before the process ends
// without them.
inline constexpr double graceSeconds = 0.25;

// Does `work` on a thread of its own and returns what came of it. When a signal comes, the work has
// `graceSeconds` to notice it (StopSignals::take()) and to return; then this says so as
// sayInterrupted() does, and whether the display server does not answer, and ends the process at
// once with nothingSent.
ExitStatus untilSignal(const StopSignals &signals, const char *nothing,
                       std::function<ExitStatus()> work);

// "No palette: Interrupt." on standard error, where `nothing` is "No palette". Only the first call
// in a process says anything.
void sayInterrupted(const char *nothing, int signum);

// Ends the process without its destructors, which would wait for the library.
[[noreturn]] void endAtOnce(ExitStatus status);

} // namespace mirrorctl
