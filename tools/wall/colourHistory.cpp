#include "tools/wall/colourHistory.h"

#include <algorithm>

namespace panelwall {

ColourHistory::ColourHistory(std::size_t panels, std::size_t mostRows) {
    const std::size_t rows = std::min(panels, mostRows);
    for (std::size_t i = 0; i < rows; ++i)
        chosen.push_back(i * panels / rows);
}

ColourHistory::Entry &ColourHistory::entryFor(Clock::time_point now) {
    const std::int64_t slot = slotOf(now);
    if (kept.empty() || kept.back().slot < slot)
        kept.push_back({slot, std::vector<std::optional<Colour>>(chosen.size())});
    while (kept.size() > 1 && kept[1].slot <= slot - slotCount)
        kept.pop_front();
    return kept.back();
}

} // namespace panelwall
