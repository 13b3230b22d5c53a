// A platform without a screen: one display of a chosen size, for which the benchmark delivers the
// frames. Its calls do almost nothing, so they do not affect the measurements.
#pragma once

#include <cstddef>

namespace bench {

constexpr int standInDisplay = 1;

// Applies to the next configuration.
void setStandInSize(std::size_t width, std::size_t height);

// Calls the handler of the stream made last, on this thread, with a complete frame.
void deliver(void *pixels);

} // namespace bench
