// When the terminal is to be drawn again.
#pragma once

#include "tools/wall/rateMeter.h"

#include <chrono>
#include <optional>

namespace panelwall {

// At most twenty times a second, which also is the pace of panels on their way to another colour;
// four times a second while nothing changes, so that ages and rates stay true.
class RedrawPace {
public:
    // At once after the beginning and after reset().
    Clock::time_point due(bool changed) const {
        if (!lastDrawn)
            return Clock::time_point::min();
        return *lastDrawn + std::chrono::milliseconds(changed ? 50 : 250);
    }

    void drawn(Clock::time_point now) { lastDrawn = now; }
    void reset() { lastDrawn.reset(); }

private:
    std::optional<Clock::time_point> lastDrawn;
};

} // namespace panelwall
