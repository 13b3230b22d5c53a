// How often and how regularly datagrams come.
#pragma once

#include "tools/wall/clock.h"

#include <array>
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

    std::optional<Clock::time_point> last() const { return lastArrival; }

    // How many came within the ten whole tenths of a second before the one that `now` lies in.
    std::uint64_t perSecond(Clock::time_point now) const;

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

    // In a flood they take no more room than in a trickle.
    struct Tenth {
        std::int64_t number = -1000; // since the clock began
        std::uint64_t count = 0;
    };

    std::array<Tenth, 11> tenths{};
    std::optional<Clock::time_point> lastArrival;
    std::deque<double> intervals; // milliseconds
    std::uint64_t gapCount = 0;
};

} // namespace panelwall
