#include "tools/wall/flashMeter.h"

#include "tools/config/modes.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace panelwall {

static constexpr double leastChange = 0.1 - 1e-9; // a tenth, less a tolerance for rounding
static constexpr double harmlessBrightness = 0.8;
static constexpr std::chrono::seconds window{1};

double relativeLuminance(Colour colour) {
    static const std::array<double, 256> linear = [] {
        std::array<double, 256> table{};
        for (std::size_t i = 0; i < table.size(); ++i) {
            const double share = static_cast<double>(i) / 255.0;
            table[i] = share <= 0.04045 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
        }
        return table;
    }();
    return 0.2126 * linear[colour.red] + 0.7152 * linear[colour.green] +
           0.0722 * linear[colour.blue];
}

void FlashMeter::note(double luminance, Clock::time_point now) {
    darkest = std::min(darkest, luminance);
    brightest = std::max(brightest, luminance);
    const bool brighter = direction != Direction::Up && luminance - darkest >= leastChange &&
                          darkest < harmlessBrightness;
    const bool darker = direction != Direction::Down && brightest - luminance >= leastChange &&
                        luminance < harmlessBrightness;
    if (!brighter && !darker)
        return;
    direction = brighter ? Direction::Up : Direction::Down;
    darkest = brightest = luminance;
    while (!changes.empty() && (now - changes.front() >= window || changes.size() >= maxChanges))
        changes.pop_front();
    changes.push_back(now);
    const double flashes = perSecond(now);
    highest = std::max(highest, flashes);
    if (flashes > config::harmlessFlashes)
        excess = now;
}

double FlashMeter::perSecond(Clock::time_point now) const {
    return 0.5 * static_cast<double>(
                     std::count_if(changes.begin(), changes.end(), [now](Clock::time_point change) {
                         return now - change < window;
                     }));
}

} // namespace panelwall
