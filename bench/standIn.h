// A system without a screen below the manager: one display of a chosen size, whose frames the
// benchmark delivers itself. The calls do nothing that would show in a measurement.
#pragma once

#include <cstddef>

namespace bench {

constexpr int standInDisplay = 1;

// For the next configuration.
void setStandInSize(std::size_t width, std::size_t height);

// Calls the handler of the stream made last, on this thread, with a complete frame.
void deliver(void *pixels);

} // namespace bench
