// The texts about a run.
#pragma once

#include "tools/mirrorctl/run/frameCounter.h"

#include <cstdint>
#include <optional>
#include <string>

namespace mirrorctl {

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

} // namespace mirrorctl
