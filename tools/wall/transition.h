// How a panel gets from one colour to the next.
#pragma once

#include "tools/lights/device.h"
#include "tools/wall/clock.h"

#include <array>

namespace panelwall {

using lights::Colour;

// The colour of one panel as time passes: at rest, or on its way to another colour, linearly in
// each channel. Begins at rest in black, as a light does. Time comes from the caller and only goes
// forward.
class Transition {
public:
    // Sets out for `target`, from the colour of this moment; arrives after `length`, or at once
    // when that is 0.
    void moveTo(Colour target, Clock::duration length, Clock::time_point now);

    Colour at(Clock::time_point now) const;

    // How long it is until it arrives; 0 at rest.
    Clock::duration left(Clock::time_point now) const;

    // Whether the colour at a later moment can be another one.
    bool isMoving(Clock::time_point now) const { return left(now) > Clock::duration::zero(); }

private:
    // Unrounded, since a panel may set out again many times on its way: by less than a step of a
    // channel each time it would never arrive.
    using Channels = std::array<double, 3>;

    Channels channelsAt(Clock::time_point now) const;

    Channels from{};
    Channels to{};
    Clock::time_point begin;
    Clock::duration length{};
};

} // namespace panelwall
