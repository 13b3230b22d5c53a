#include "tools/lightbridge/flashLimiter.h"

#include <algorithm>

namespace lightbridge {

bool FlashLimiter::limit(std::span<Colour> colours, Clock::time_point now) {
    held.assign(colours.size(), false);
    const auto hold = [&](std::size_t panel) {
        colours[panel] = meter.colours()[panel];
        held[panel] = true;
    };
    for (std::size_t i = 0; i < colours.size(); ++i)
        if (!meter.allows(i, colours[i], now))
            hold(i);
    // Holding one area changes the averages of others. Each round holds another area, until at the
    // latest nothing changes any more.
    for (bool isSettled = false; !isSettled;) {
        isSettled = true;
        for (const auto &area : meter.areas()) {
            if (meter.allows(area, colours, now))
                continue;
            for (const std::size_t panel : area.panels) {
                isSettled = isSettled && held[panel];
                hold(panel);
            }
        }
    }
    meter.note(colours, now);
    return std::find(held.begin(), held.end(), true) != held.end();
}

} // namespace lightbridge
