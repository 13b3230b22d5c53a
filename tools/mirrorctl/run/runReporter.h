// What a run prints while it goes on and at its end.
#pragma once

#include "tools/mirrorctl/libraryMessages.h"
#include "tools/mirrorctl/run/frameCounter.h"
#include "tools/mirrorctl/run/runReport.h"

#include <chrono>
#include <optional>
#include <string>

namespace mirrorctl {

// For a script, on a terminal's last line, or at the beginning and the end only.
enum class ReportStyle { Json, Live, Plain };

struct RunPlan {
    config::Document document;     // the user's
    std::string text;              // what the library is handed
    std::optional<double> seconds; // when it ends by itself
    bool once = false;             // it ends when the display server goes away
    ReportStyle style = ReportStyle::Plain;
};

// Keeps the run's time, its frames and errors, and the state of the display server. One thread.
class RunReporter {
public:
    // `counter` may be null: frames are not counted.
    RunReporter(const RunPlan &plan, FrameCounter *counter, LibraryMessages &messages);

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

    // Frames are held up until the next run, which may follow.
    void pause();

    // Removes the live line.
    void clearLine();

private:
    using Clock = std::chrono::steady_clock;

    RunState state(bool atEnd) const;
    void report(const char *event);

    const RunPlan &plan;
    FrameCounter *const counter;
    LibraryMessages &messages;
    const std::string lights; // "2 devices with 6 panels"
    Clock::time_point begin;

    // In elapsed seconds.
    double lastFrame = 0.0;
    double lastReading = 0.0;
    double nextReport = 0.0;
    double serverSince = 0.0; // when the server's state began
    double outages = 0.0;     // how long those that are over lasted

    ServerState server = ServerState::Answering;
};

} // namespace mirrorctl
