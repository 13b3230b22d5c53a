// The colours that a device was sent within the last minute.
#pragma once

#include "tools/lights/device.h"
#include "tools/wall/clock.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

namespace panelwall {

using lights::Colour;

// Time is cut into slots a little shorter than the shortest frame delay, so that each datagram of a
// run has a slot of its own and two colours taking turns are seen to. In a flood the last datagram
// of a slot stands for all of it; room is bounded by the minute and by the number of rows.
//
// One thread uses it at a time.
class ColourHistory {
public:
    static constexpr std::chrono::milliseconds slotLength{40};
    static constexpr std::int64_t slotCount = 1500;

    // What the rows showed from the beginning of a slot to the next entry.
    struct Entry {
        std::int64_t slot = 0;
        std::vector<std::optional<Colour>> rows;
    };

    // A row for each of `panels` panels, or for `mostRows` of them, evenly chosen.
    ColourHistory(std::size_t panels, std::size_t mostRows) {
        const std::size_t rows = std::min(panels, mostRows);
        for (std::size_t i = 0; i < rows; ++i)
            chosen.push_back(i * panels / rows);
    }

    // The index of the panel that each row is for.
    const std::vector<std::size_t> &rowPanels() const { return chosen; }

    // Notes the colours of this moment; `colourOf` is called with a panel's index.
    template <typename ColourOf> void note(Clock::time_point now, ColourOf colourOf) {
        const std::int64_t slot = slotOf(now);
        if (kept.empty() || kept.back().slot < slot)
            kept.push_back({slot, std::vector<std::optional<Colour>>(chosen.size())});
        while (kept.size() > 1 && kept[1].slot <= slot - slotCount)
            kept.pop_front();
        for (std::size_t i = 0; i < chosen.size(); ++i)
            kept.back().rows[i] = colourOf(chosen[i]);
    }

    // Oldest first: the entries of the last minute before the newest, and the one in force when it
    // began.
    const std::deque<Entry> &entries() const { return kept; }

    static std::int64_t slotOf(Clock::time_point time) {
        return std::chrono::floor<std::chrono::milliseconds>(time.time_since_epoch()) / slotLength;
    }

private:
    std::vector<std::size_t> chosen;
    std::deque<Entry> kept;
};

} // namespace panelwall
