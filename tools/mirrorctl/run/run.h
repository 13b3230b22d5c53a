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

// For a script, on a terminal's last line, or at the beginning and the end only.
enum class ReportStyle { Json, Live, Plain };

struct RunPlan {
    config::Document document;       // the user's
    std::string text;                // what the library is handed
    FrameCounter *counter = nullptr; // null: frames are not counted
    std::optional<double> seconds;   // when it ends by itself
    bool once = false;               // it ends when the display server goes away
    ReportStyle style = ReportStyle::Plain;
};

// What is known of the display server.
enum class ServerState { Answering, Silent, Gone };

// A moment of a run.
struct RunState {
    std::int32_t mode = 0;
    double elapsed = 0.0;          // seconds
    std::optional<double> planned; // seconds, when it ends by itself
    bool isCounted = false;        // whether frames are counted
    std::size_t frames = 0;        // in palette mode signs of life
    double silence = 0.0;          // seconds since the last of them, or since the start
    std::optional<FrameTally::Pace> pace;
    std::size_t errors = 0; // lines that the library printed
    std::string lastError;
    ServerState server = ServerState::Answering;
    double outage = 0.0;      // seconds for which it has been silent or gone
    double wholeOutage = 0.0; // seconds of the run for which it was gone
};

// One line without a line break, at most `columns` wide, with a bar of the part that is done when
// the end is planned.
std::string liveLine(const RunState &state, std::size_t columns);

// What was done, for the end: whole lines.
std::string summary(const RunState &state);

// One object on one line, for scripts; `event` names it.
std::string jsonLine(const char *event, const RunState &state);

// Keeps the run's time, its frames and errors, and the state of the display server. One thread.
class RunReporter {
public:
    RunReporter(const RunPlan &plan, LibraryMessages &messages);

    // Seconds since restartClock().
    double elapsed() const { return std::chrono::duration<double>(Clock::now() - begin).count(); }
    void restartClock() { begin = Clock::now(); }

    // Takes in the library's messages and the frames that have arrived, without waiting.
    void read();

    void reportStart();
    void reportWhenDue();
    void reportEnd();
    // When to come back for read() and reportWhenDue(), in elapsed seconds; nothing: need not be.
    std::optional<double> nextTime() const;

    // An event of the display server's, which is in this state from now on.
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
    double outages = 0.0;     // how long those that are over lasted

    ServerState server = ServerState::Answering;
};

// Mirrors, and again each time that the display server has gone away and is back with the display.
// Of the main thread, which calls the library only through LibraryCall and so is never held up.
class Run {
public:
    Run(const RunPlan &plan, const StopSignals &signals, LibraryMessages &messages);

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
    std::optional<ServerWatch> watch{std::in_place};
    ExitStatus ending = ExitStatus::Done;
    double nextTry = 0.0;           // to find the server again, in elapsed seconds
    bool isMissingReported = false; // that the server is back without the display
};

} // namespace mirrorctl
