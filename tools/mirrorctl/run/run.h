// One run of mirrorctl, from the start of mirroring to its end, and what it prints meanwhile.
#pragma once

#include "tools/mirrorctl/libraryCall.h"
#include "tools/mirrorctl/libraryMessages.h"
#include "tools/mirrorctl/run/frameCounter.h"
#include "tools/mirrorctl/server.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace mirrorctl {

// For scripts, on a terminal's last line, or only at the beginning and the end.
enum class ReportStyle { Json, Live, Plain };

struct RunPlan {
    config::Document document;       // the user's
    std::string text;                // passed to the library
    FrameCounter *counter = nullptr; // null: frames are not counted
    std::optional<double> seconds;   // after which it ends by itself
    bool once = false;               // it ends when the display server goes away
    ReportStyle style = ReportStyle::Plain;
};

// The display server's state as far as it is known.
enum class ServerState { Answering, Silent, Gone };

// The state of a run at one moment.
struct RunState {
    std::int32_t mode = 0;
    double elapsed = 0.0;          // seconds
    std::optional<double> planned; // seconds after which it ends by itself
    bool isCounted = false;        // whether frames are counted
    std::size_t frames = 0;        // in palette mode datagrams to one panel
    double silence = 0.0;          // seconds since the last frame, or since the start
    std::optional<FrameTally::Pace> pace;
    std::size_t errors = 0; // lines that the library printed
    std::string lastError;
    ServerState server = ServerState::Answering;
    double outage = 0.0;      // seconds for which it has been silent or gone
    double wholeOutage = 0.0; // seconds of the run for which it was gone
};

// One line without a line break, at most `columns` wide, with a progress bar if the end is planned.
std::string liveLine(const RunState &state, std::size_t columns);

// The final report, as whole lines.
std::string summary(const RunState &state);

// One object on one line, for scripts; `event` names it.
std::string jsonLine(const char *event, const RunState &state);

// Tracks and reports a run's time, frames and errors, and the display server's state. One thread.
class RunReporter {
public:
    RunReporter(const RunPlan &plan, LibraryMessages &messages);

    // Seconds since restartClock().
    double elapsed() const { return std::chrono::duration<double>(Clock::now() - begin).count(); }
    void restartClock() { begin = Clock::now(); }

    // Reads the library's messages and the frames that have arrived, without waiting.
    void read();

    void reportStart();
    void reportWhenDue();
    void reportEnd();
    // When to call read() and reportWhenDue() next, in elapsed seconds; nothing: no need to.
    std::optional<double> nextTime() const;

    // Reports an event of the display server, which has this state from now on.
    void reportServer(ServerState state, const char *event, const std::string &sentence);
    ServerState serverState() const { return server; }

    // Removes the live line.
    void clearLine();

private:
    using Clock = std::chrono::steady_clock;

    RunState state(bool atEnd) const;
    void report(const char *event);

    const RunPlan &plan;
    LibraryMessages &messages;
    const std::string lights; // "2 devices with 6 panels"
    Clock::time_point begin = Clock::now();

    // In elapsed seconds.
    double lastFrame = 0.0;
    double lastReading = 0.0;
    double nextReport = 0.0;
    double serverSince = 0.0; // when the server's state began
    double outages = 0.0;     // total length of the finished ones

    ServerState server = ServerState::Answering;
};

// Mirrors, and starts again whenever the display server has gone away and is back with the display.
// Used by the main thread, which calls the library only through LibraryCall and so never blocks.
class Run {
public:
    Run(const RunPlan &plan, const StopSignals &signals, LibraryMessages &messages);

    // Starts mirroring with the text that the library has been given; for a LibraryCall.
    ExitStatus startFirst();

    // Mirrors until the end, and returns the exit status.
    ExitStatus mirror();

private:
    enum class Phase {
        Mirroring,
        Stopping, // since the server has gone
        Waiting,  // for the server
        Starting, // again
    };

    bool isOver();
    bool hasServerGone();

    // Each handles one phase; the last handles two.
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
    std::optional<ServerWatch> watch{std::in_place};
    ExitStatus ending = ExitStatus::Done;
    double nextTry = 0.0;           // to find the server, in elapsed seconds
    bool isMissingReported = false; // server back, display missing
};

} // namespace mirrorctl
