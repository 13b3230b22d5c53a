#include "tools/wall/flashMeter.h"

#include "tools/config/modes.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace panelwall {

static constexpr std::chrono::seconds window{1};

double linearLight(std::uint8_t channel) {
    static const std::array<double, 256> linear = [] {
        std::array<double, 256> table{};
        for (std::size_t i = 0; i < table.size(); ++i) {
            const double share = static_cast<double>(i) / 255.0;
            table[i] = share <= 0.04045 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
        }
        return table;
    }();
    return linear[channel];
}

double relativeLuminance(Colour colour) {
    return 0.2126 * linearLight(colour.red) + 0.7152 * linearLight(colour.green) +
           0.0722 * linearLight(colour.blue);
}

FlashMeter::Direction FlashMeter::changeTo(double luminance) const {
    const double low = std::min(darkest, luminance);
    const double high = std::max(brightest, luminance);
    if (direction != Direction::Up && luminance - low >= leastChange && low < harmless)
        return Direction::Up;
    if (direction != Direction::Down && high - luminance >= leastChange && luminance < harmless)
        return Direction::Down;
    return Direction::None;
}

bool FlashMeter::allows(double luminance, Clock::time_point now) const {
    constexpr Clock::duration leastPause =
        std::chrono::duration_cast<Clock::duration>(window / (2.0 * config::harmlessFlashes));
    return changeTo(luminance) == Direction::None || changes.empty() ||
           now - changes.back() >= leastPause;
}

void FlashMeter::note(double luminance, Clock::time_point now) {
    const Direction change = changeTo(luminance);
    darkest = std::min(darkest, luminance);
    brightest = std::max(brightest, luminance);
    if (change == Direction::None)
        return;
    direction = change;
    darkest = brightest = luminance;
    while (!changes.empty() && (now - changes.front() >= window || changes.size() >= maxChanges))
        changes.erase(changes.begin());
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
