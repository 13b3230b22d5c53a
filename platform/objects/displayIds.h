// Maps monitor names to display identifiers.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace platform {

// One identifier for each name, in the order of the names: 31 bits, never 0, all different. It is a
// hash of the name alone, so that a monitor keeps its identifier when the server restarts or the
// order changes. Among names with the same hash, the alphabetically first keeps it and the others
// get the next free numbers.
std::vector<std::uint32_t> displayIdsOf(const std::vector<std::string> &names);

} // namespace platform
