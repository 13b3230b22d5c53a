// Names that were meant to be others.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace config {

// The one of `candidates` that is nearest to `name`, without regard to case: at most two edits away
// (one for a name of fewer than six letters), where an edit is a letter that is wrong, missing or
// extra, or two neighbours that are swapped.
std::optional<std::string> nearestName(const std::string &name,
                                       const std::vector<std::string> &candidates);

} // namespace config
