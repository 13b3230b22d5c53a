// One run of mirrorctl, from the start of mirroring to its end.
#pragma once

#include "tools/mirrorctl/libraryCall.h"
#include "tools/mirrorctl/run/runReporter.h"
#include "tools/mirrorctl/server.h"

#include <optional>

namespace mirrorctl {

// Mirrors, and again each time that the display server has gone away and is back with the display.
// Of the main thread, which calls the library only through LibraryCall and so is never held up.
class Run {
public:
    Run(const RunPlan &plan, const StopSignals &signals, FrameCounter *counter,
        LibraryMessages &messages);

    // Starts mirroring with the text that the library has been handed; for a LibraryCall.
    ExitStatus startFirst();

    // Goes on until the end.
    ExitStatus mirror();

private:
    enum class Phase {
        Mirroring,
        Stopping, // since the server has gone
        Waiting,  // for the server
        Starting, // again
    };

    bool isOver();
    // What the library said when a run ended by itself; null while it goes on.
    const char *endMessage() const;
    bool hasServerGone();

    // Each looks after one phase or, for the last, two.
    void followServer();
    void awaitServer();
    void awaitCall();

    ExitStatus startAgain();
    void await() const;
    ExitStatus end();
    bool stopInTime();

    const RunPlan &plan;
    const StopSignals &signals;
    LibraryMessages &messages;
    RunReporter reporter;

    Phase phase = Phase::Mirroring;
    std::optional<LibraryCall> call; // while stopping and starting
    std::optional<ServerWatch> watch;
    ExitStatus ending = ExitStatus::Done;
    double nextTry = 0.0;           // to find the server again, in elapsed seconds
    bool isMissingReported = false; // that the server is back without the display
};

} // namespace mirrorctl
