// The names of the modes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace config {

// "match", "melt", "fade" or "palette"; null for numbers that are no mode.
const char *modeName(std::int32_t mode);

// The mode with this name or, in one digit, this number.
std::optional<std::int32_t> modeNumber(const std::string &text);

} // namespace config
