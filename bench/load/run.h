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
    double thread = 0;  // of that, the thread's that sends
    double server = 0;  // of the X server, with the drawing in it
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
    std::vector<std::string> faults; // empty: as it must be
};

// Of the library over a screen of its own.
Result runLibrary(const Plan &plan, Receivers &receivers, Sending &sending);

// Of the bare sender, with the datagrams that began a run of the library.
Result runBare(const Plan &plan, Receivers &receivers, const Sending &model,
               std::chrono::nanoseconds period, double seconds);

} // namespace load
