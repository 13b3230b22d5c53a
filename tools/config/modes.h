// The modes: their names, and how fast they let a whole wall flash.
//
// Pure functions, callable from any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace config {

inline constexpr std::int32_t matchMode = 0;
inline constexpr std::int32_t paletteMode = 3;

// "match", "melt", "fade" or "palette"; null for numbers that are no mode.
const char *modeName(std::int32_t mode);

// The mode with this name or, in one digit, this number.
std::optional<std::int32_t> modeNumber(const std::string &text);

// More flashes a second than these, over a large part of what somebody sees, can set off seizures.
inline constexpr double harmlessFlashes = 3.0;

// The most flashes a second of all panels together that a mode lets through from a screen that
// flashes; a flash is a change and its opposite. 0 for modes whose panels do not change together,
// and for numbers that are no mode.
double mostFlashes(std::int32_t mode);

} // namespace config
