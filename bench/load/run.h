// One run under load, watched at the receiving end.
#pragma once

#include "bench/load/plan.h"
#include "bench/load/processSample.h"
#include "bench/load/receivers.h"
#include "bench/load/senders.h"

#include <string>
#include <vector>

namespace load {

struct Cost {
    double process = 0; // microseconds of processor time a frame
    double thread = 0;  // the sending thread's share of that
    double server = 0;  // of the X server, including the drawing
};

struct Result {
    double seconds = 0;
    std::uint64_t frames = 0; // while it was measured
    std::int64_t drawings = 0;
    std::uint64_t tried = 0; // from the first datagram to the last
    std::uint64_t refused = 0;
    std::uint64_t received = 0;
    std::uint64_t dropped = 0; // by the kernel, at the receiving end
    FrameCounts counts;
    std::uint64_t mixtures = 0;
    Histogram intervals;
    std::vector<ProcessSample> samples; // one a second
    Cost cost;
    std::vector<std::string> faults; // must be empty
};

// Runs the library with a new virtual screen.
Result runLibrary(const Plan &plan, Receivers &receivers, SharedSendState &state);

// Runs the bare sender with the first datagrams of a run of the library, `model`.
Result runBare(const Plan &plan, Receivers &receivers, const SharedSendState &model,
               std::chrono::nanoseconds period, double seconds);

} // namespace load
