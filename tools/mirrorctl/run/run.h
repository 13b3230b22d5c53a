// One run of mirrorctl, from the start of mirroring to its end.
#pragma once

#include "tools/mirrorctl/libraryCall.h"
#include "tools/mirrorctl/libraryWords.h"
#include "tools/mirrorctl/run/frameWitness.h"
#include "tools/mirrorctl/run/runReport.h"
#include "tools/mirrorctl/server.h"

#include <chrono>
#include <optional>

namespace mirrorctl {

// How the run is told: to a script, on a terminal's last line, or at its beginning and end only.
enum class Telling { json, live, plain };

struct RunPlan {
    config::Document document;     // the user's
    std::string text;              // what the library is handed
    std::optional<double> seconds; // when it ends by itself
    bool once = false;             // it ends when the display server goes away
    Telling telling = Telling::plain;
};

// Mirrors, and again each time that the display server has gone away and is back with the display.
// The main thread, which calls the library only through LibraryCall and so is never held up.
class Run {
public:
    // `witness` may be null: nobody counts.
    Run(const RunPlan &plan, const StopSignals &signals, FrameWitness *witness,
        LibraryWords &words);

    // Starts mirroring with the text that the library has been handed; for a LibraryCall.
    ExitStatus startFirst();

    // Until the end.
    ExitStatus goOn();

private:
    using Clock = std::chrono::steady_clock;

    enum class Phase {
        mirroring,
        stopping, // since the server has gone
        waiting,  // for the server
        starting, // again
    };

    void takeIn();
    // What the library said when a run ended by itself; null while it goes on.
    const char *ownEnd() const;
    bool hasServerGone();
    bool isOver();
    void followServer();
    void awaitServer();
    void beginOutage();
    void endOutage();
    ExitStatus startAgain();
    void note(ServerState server);
    void announce(const char *event, const std::string &sentence);
    void await();
    bool stopInTime();
    ExitStatus end();

    RunState state(bool atEnd) const;
    void tell(const char *event, bool atEnd);
    double elapsed() const { return std::chrono::duration<double>(Clock::now() - begin).count(); }

    const RunPlan &plan;
    const StopSignals &signals;
    FrameWitness *const witness;
    LibraryWords &words;
    const std::string lights; // "2 devices with 6 panels"

    Clock::time_point begin;
    Phase phase = Phase::mirroring;
    std::optional<LibraryCall> call;
    std::optional<ServerWatch> watch;
    ExitStatus ending = ExitStatus::done;

    // In seconds since the beginning.
    double lastFrame = 0.0;
    double lastReading = 0.0;
    double nextTelling = 0.0;
    double nextTry = 0.0;
    double serverSince = 0.0; // when the server's state began

    ServerState server = ServerState::answering;
    double outages = 0.0;  // seconds of those that are over
    bool isMissed = false; // it has been said that the server is back without the display
};

} // namespace mirrorctl
