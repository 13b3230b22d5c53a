// Waiting for descriptors.
#pragma once

#include <optional>
#include <vector>

namespace mirrorctl {

// Returns as soon as one of the descriptors (those that are not -1) can be read or has been hung
// up, with true; after `timeout` seconds, if given, or when interrupted, with false.
bool awaitReadable(const std::vector<int> &descriptors, std::optional<double> timeout);

} // namespace mirrorctl
