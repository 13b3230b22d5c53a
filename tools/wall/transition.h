// How a panel gets from one colour to the next.
#pragma once

#include "tools/lights/device.h"
#include "tools/wall/clock.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

namespace panelwall {

using lights::Colour;

// The colour of one panel as time passes: at rest, or on its way to another colour, linearly in
// each channel. Begins at rest in black, as a light does. Time comes from the caller and only goes
// forward.
class Transition {
public:
    // Sets out for `target`, from the colour of this moment; arrives after `newLength`, or at once
    // when that is 0.
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

    // How long it is until it arrives; 0 at rest.
    Clock::duration left(Clock::time_point now) const {
        return from == to ? Clock::duration::zero()
                          : std::clamp(length - (now - begin), Clock::duration::zero(), length);
    }

    // Whether the colour at a later moment can be another one.
    bool isMoving(Clock::time_point now) const { return left(now) > Clock::duration::zero(); }

private:
    // Unrounded, since a panel may set out again many times on its way: by less than a step of a
    // channel each time it would never arrive.
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
