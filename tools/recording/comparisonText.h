// A comparison of recordings in words.
#pragma once

#include "tools/recording/compareRecordings.h"

namespace panelwall {

// The first thing in which two datagrams of a device differ, in words.
std::string describeDifference(Layout layout, const std::vector<std::uint8_t> &left,
                               const std::vector<std::uint8_t> &right);

// Line by line; the last one says whether they differ.
std::vector<std::string> describe(const Comparison &comparison);

} // namespace panelwall
