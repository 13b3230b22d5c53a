// How often a brightness flashes.
#pragma once

#include "tools/lights/device.h"
#include "tools/wall/clock.h"

#include <optional>
#include <vector>

namespace panelwall {

using lights::Colour;

// A channel's light, from 0 to 1: the value without its gamma.
double linearLight(std::uint8_t channel);

// The brightness of a colour, from 0 to 1: linear light, weighted as by the eye.
double relativeLuminance(Colour colour);

// A flash is a change of relative luminance by a tenth or more and an opposite one, the darker end
// of each below 0.8. More than three flashes within a second can trigger seizures.
//
// Steps in the same direction add up to one change. Times come from the caller and only go forward.
class FlashMeter {
public:
    FlashMeter() = default;

    // For another quantity from 0 to 1: a flash consists of changes by `leastChange_` or more, the
    // lower end of each below `harmless_`.
    FlashMeter(double leastChange_, double harmless_)
        : leastChange(leastChange_ - rounding), harmless(harmless_) {}

    // Whether noting this value keeps changes so far apart that there are never more flashes within
    // a second than are harmless. Changes in quick succession would be worse than as many spread
    // over the second.
    bool allows(double luminance, Clock::time_point now) const;

    void note(double luminance, Clock::time_point now);

    // Flashes within the last second. A change without its opposite counts as half a flash.
    double perSecond(Clock::time_point now) const;

    // The highest perSecond() so far, and when it last exceeded the harmless number.
    double most() const { return highest; }
    std::optional<Clock::time_point> lastExcess() const { return excess; }

private:
    enum class Direction { None, Up, Down };

    static constexpr double rounding = 1e-9;

    // The change that noting this value would complete.
    Direction changeTo(double luminance) const;

    // Bounds the memory in a flood; no light changes this often.
    static constexpr std::size_t maxChanges = 1000;

    double leastChange = 0.1 - rounding;
    double harmless = 0.8;
    Direction direction = Direction::None; // of the last change
    double darkest = 1.0;                  // since that change was noted
    double brightest = 0.0;
    std::vector<Clock::time_point> changes; // of the second before the newest
    double highest = 0.0;
    std::optional<Clock::time_point> excess;
};

} // namespace panelwall
