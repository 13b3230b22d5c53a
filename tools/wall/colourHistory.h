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

// Time is divided into slots a little shorter than the shortest frame delay, so that each datagram
// of a run has its own slot and alternating colours stay visible. In a flood only the last datagram
// of a slot is kept; memory is bounded by the minute and by the number of rows.
//
// One thread uses it at a time.
class ColourHistory {
public:
    static constexpr std::chrono::milliseconds slotLength{40};
    static constexpr std::int64_t slotCount = 1500;

    // The rows' colours from the beginning of a slot to the next entry.
    struct Entry {
        std::int64_t slot = 0;
        std::vector<std::optional<Colour>> rows;
    };

    // A row for each of `panels` panels, but at most `maxRows`, spread evenly over the panels.
    ColourHistory(std::size_t panels, std::size_t maxRows) {
        const std::size_t rows = std::min(panels, maxRows);
        for (std::size_t i = 0; i < rows; ++i)
            chosen.push_back(i * panels / rows);
    }

    // Each row's panel, as an index.
    const std::vector<std::size_t> &rowPanels() const { return chosen; }

    // Records the current colours; `colourOf` is called with a panel's index.
    template <typename ColourOf> void note(Clock::time_point now, ColourOf colourOf) {
        const std::int64_t slot = slotOf(now);
        if (kept.empty() || kept.back().slot < slot)
            kept.push_back({slot, std::vector<std::optional<Colour>>(chosen.size())});
        while (kept.size() > 1 && kept[1].slot <= slot - slotCount)
            kept.pop_front();
        for (std::size_t i = 0; i < chosen.size(); ++i)
            kept.back().rows[i] = colourOf(chosen[i]);
    }

    // Oldest first: the entries of the minute before the newest, preceded by the entry in effect
    // when that minute began.
    const std::deque<Entry> &entries() const { return kept; }

    static std::int64_t slotOf(Clock::time_point time) {
        return std::chrono::floor<std::chrono::milliseconds>(time.time_since_epoch()) / slotLength;
    }

private:
    std::vector<std::size_t> chosen;
    std::deque<Entry> kept;
};

} // namespace panelwall
