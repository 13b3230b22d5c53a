// The modes: their names, and how fast a whole wall can flash in them.
//
// Pure functions, callable from any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace config {

inline constexpr std::int32_t matchMode = 0;
inline constexpr std::int32_t paletteMode = 3;

// "match", "melt", "fade" or "palette"; null for other numbers.
const char *modeName(std::int32_t mode);

// The mode with this name or one-digit number.
std::optional<std::int32_t> modeNumber(const std::string &text);

// More flashes per second than this, over a large part of the field of view, can trigger seizures.
inline constexpr double harmlessFlashes = 3.0;

// The most flashes per second that a mode passes on from a flashing screen to all panels together;
// a flash is a change and the change back. 0 for modes whose panels do not change together, and for
// numbers that are not a mode.
double maxFlashes(std::int32_t mode);

} // namespace config
