// How fast a whole wall can flash.
//
// Pure functions, callable from any thread.
#pragma once

#include <cstdint>

namespace config {

// More flashes a second than these, over a large part of what somebody sees, can set off seizures.
inline constexpr double harmlessFlashes = 3.0;

// The most flashes a second of all panels together that a mode lets through from a screen that
// flashes; a flash is a change and its opposite. 0 for modes whose panels do not change together,
// and for numbers that are no mode.
double mostFlashes(std::int32_t mode);

} // namespace config
