// What the lights were sent, for readers.
#pragma once

#include "tools/config/configDocument.h"
#include "tools/mirrorctl/sentFrames.h"

#include <cstddef>
#include <vector>

namespace mirrorctl {

// Prints one line per record, in columns; `shares` holds the device of each frame. Devices that
// were sent nothing have a line that says so.
void printSnapshot(const std::vector<SentFrame> &frames, const std::vector<std::size_t> &shares,
                   const std::vector<config::DeviceEntry> &devices);

} // namespace mirrorctl
