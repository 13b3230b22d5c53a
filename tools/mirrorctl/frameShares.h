// Which device got which frame.
//
// The library hands out the frames of one moment in device order and leaves out the devices that
// were sent nothing, as palette mode does while none of a device's panels is due. The frames
// themselves then have to tell whose they are, by their panels.
#pragma once

#include "tools/config/configDocument.h"
#include "tools/mirrorctl/sentFrames.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace mirrorctl {

// For each frame the index of its device. Nothing when the frames fit the devices in several ways,
// or in none.
std::optional<std::vector<std::size_t>>
shareFrames(const std::vector<SentFrame> &frames, const std::vector<config::DeviceEntry> &devices);

} // namespace mirrorctl
