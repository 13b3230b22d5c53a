// Writing to standard output without ever being stuck there.
#pragma once

#include <string_view>

namespace panelwall {

// Whether a few lines can be written now without waiting. A closed reader counts as ready: the
// write then fails at once.
bool canWrite(int fd);

// Writes all of it, waiting as needed; gives up when a signal to end comes meanwhile. False when
// not everything was written for another reason (the reader is gone, the disk is full).
bool writeAll(int fd, std::string_view text);

} // namespace panelwall
