// How often a brightness flashes.
#pragma once

#include "tools/lights/device.h"
#include "tools/wall/clock.h"

#include <deque>
#include <optional>

namespace panelwall {

using lights::Colour;

// How bright a colour is, from 0 to 1: linear light, weighted as the eye does.
double relativeLuminance(Colour colour);

// A flash is a change of relative luminance by a tenth or more and an opposing one, the darker end
// of each below 0.8. More than three of them within a second can set off seizures.
//
// Steps in the same direction add up to one change. Times come from the caller and only go forward.
class FlashMeter {
public:
    void note(double luminance, Clock::time_point now);

    // Flashes within the last second. A change without its opposite is half of one.
    double perSecond(Clock::time_point now) const;

    // The most that perSecond() has been, and when it last was more than what is harmless.
    double most() const { return highest; }
    std::optional<Clock::time_point> lastExcess() const { return excess; }

private:
    enum class Direction { None, Up, Down };

    // A flood takes no more room than this; no light changes as often.
    static constexpr std::size_t mostChanges = 1000;

    Direction direction = Direction::None; // of the last change
    double darkest = 1.0;                  // since it began
    double brightest = 0.0;
    std::deque<Clock::time_point> changes; // of the second before the newest
    double highest = 0.0;
    std::optional<Clock::time_point> excess;
};

} // namespace panelwall
