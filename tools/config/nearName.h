// Names that were meant to be others.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace config {

// The one of `candidates` that is `name` but for upper and lower case or at most two letters that
// are wrong, missing or too many; the nearest, if there are several.
std::optional<std::string> nearestName(std::string_view name,
                                       const std::vector<std::string> &candidates);

} // namespace config
