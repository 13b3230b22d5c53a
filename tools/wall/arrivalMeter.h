// How regularly datagrams come.
#pragma once

#include "tools/wall/rateMeter.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>

namespace panelwall {

// Looks at the last `kept` intervals between one datagram and the next. After a pause of
// `longestInterval` or more it starts over: a run that ended says nothing about the rhythm of the
// next. Times come from the caller and only go forward.
class ArrivalMeter {
public:
    static constexpr std::size_t kept = 32;
    static constexpr std::chrono::seconds longestInterval{3};

    void note(Clock::time_point now);

    // The usual interval, the median, in milliseconds; none before the second datagram.
    std::optional<double> interval() const;

    // How much an interval differs from the one before it, on average, in milliseconds; none before
    // the third datagram.
    std::optional<double> jitter() const;

    // How many intervals were more than twice the usual one, and at least 20 ms more. Where
    // something is sent in a steady rhythm, a datagram was late or lost there.
    std::uint64_t gaps() const { return gapCount; }

private:
    // The median of few intervals says little.
    static constexpr std::size_t leastForGaps = 8;

    std::optional<Clock::time_point> last;
    std::deque<double> intervals; // milliseconds
    std::uint64_t gapCount = 0;
};

} // namespace panelwall
