// How often and how regularly datagrams arrive.
#pragma once

#include "tools/wall/clock.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>

namespace panelwall {

// Measures the last `kept` intervals between consecutive datagrams. After a pause of
// `longestInterval` or more it starts over, because the next run may have another rhythm. Times
// come from the caller and only go forward.
class ArrivalMeter {
public:
    static constexpr std::size_t kept = 32;
    static constexpr std::chrono::seconds longestInterval{3};

    void note(Clock::time_point now);

    std::optional<Clock::time_point> last() const { return lastArrival; }

    // Datagrams in the last ten complete tenths of a second before `now`.
    std::uint64_t perSecond(Clock::time_point now) const;

    // The median interval in milliseconds; none before the second datagram.
    std::optional<double> interval() const;

    // The average difference between consecutive intervals, in milliseconds; none before the third
    // datagram.
    std::optional<double> jitter() const;

    // How many intervals were more than twice the median and more than 20 ms longer. If datagrams
    // are sent in a steady rhythm, a gap means that one was late or lost.
    std::uint64_t gaps() const { return gapCount; }

private:
    // The median of fewer intervals is unreliable.
    static constexpr std::size_t leastForGaps = 8;

    // The datagrams in a tenth of a second. Counts need no more memory in a flood.
    struct Tenth {
        std::int64_t number = -1000; // in tenths since the clock's epoch
        std::uint64_t count = 0;
    };

    std::array<Tenth, 11> tenths{};
    std::optional<Clock::time_point> lastArrival;
    std::deque<double> intervals; // milliseconds
    std::uint64_t gapCount = 0;
};

} // namespace panelwall
