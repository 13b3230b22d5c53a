// How many datagrams came within the last second.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>

namespace panelwall {

using Clock = std::chrono::steady_clock;

// Counts in tenths of a second, so that a flood of datagrams takes no more room than a trickle.
class RateMeter {
public:
    void note(Clock::time_point now) {
        const std::int64_t tenth = tenthOf(now);
        Slot &slot = slots[static_cast<std::size_t>(tenth % slotCount)];
        if (slot.tenth != tenth)
            slot = {tenth, 0};
        ++slot.count;
    }

    // The ten whole tenths before the one that `now` lies in.
    std::uint64_t perSecond(Clock::time_point now) const {
        const std::int64_t tenth = tenthOf(now);
        std::uint64_t sum = 0;
        for (const Slot &slot : slots)
            if (slot.tenth < tenth && slot.tenth >= tenth - 10)
                sum += slot.count;
        return sum;
    }

private:
    static constexpr std::int64_t slotCount = 11;

    struct Slot {
        std::int64_t tenth = -1000;
        std::uint64_t count = 0;
    };

    static std::int64_t tenthOf(Clock::time_point time) {
        return time.time_since_epoch() / std::chrono::milliseconds(100);
    }

    std::array<Slot, slotCount> slots{};
};

} // namespace panelwall
