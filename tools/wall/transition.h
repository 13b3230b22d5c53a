// The transition of a panel from one colour to the next.
#pragma once

#include "tools/lights/device.h"
#include "tools/wall/clock.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

namespace panelwall {

using lights::Colour;

// The colour of one panel over time: constant, or changing to another colour linearly in each
// channel. Starts as constant black, like a light. Times come from the caller and only go forward.
class Transition {
public:
    // Starts a transition from the current colour to `target` that takes `newLength`; 0 changes the
    // colour at once.
    void moveTo(Colour target, Clock::duration newLength, Clock::time_point now) {
        from = channelsAt(now);
        to = {static_cast<double>(target.red), static_cast<double>(target.green),
              static_cast<double>(target.blue)};
        begin = now;
        length = newLength;
    }

    Colour at(Clock::time_point now) const {
        const auto [red, green, blue] = channelsAt(now);
        const auto rounded = [](double value) {
            return static_cast<std::uint8_t>(std::lround(value));
        };
        return {rounded(red), rounded(green), rounded(blue)};
    }

    // The time until the transition ends; 0 if there is none.
    Clock::duration left(Clock::time_point now) const {
        return from == to ? Clock::duration::zero()
                          : std::clamp(length - (now - begin), Clock::duration::zero(), length);
    }

    // Whether the colour can still change.
    bool isMoving(Clock::time_point now) const { return left(now) > Clock::duration::zero(); }

private:
    // Not rounded: if a transition is restarted often, a channel changes by less than one step each
    // time, and with rounding it would never reach its target.
    using Channels = std::array<double, 3>;

    Channels channelsAt(Clock::time_point now) const {
        const auto passed = std::max(now - begin, Clock::duration::zero());
        if (passed >= length)
            return to;
        const double share = std::chrono::duration<double>(passed) / length;
        Channels channels;
        for (std::size_t i = 0; i < channels.size(); ++i)
            channels[i] = from[i] + (to[i] - from[i]) * share;
        return channels;
    }

    Channels from{};
    Channels to{};
    Clock::time_point begin;
    Clock::duration length{};
};

} // namespace panelwall
