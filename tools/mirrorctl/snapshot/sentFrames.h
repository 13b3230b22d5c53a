// Parses the library's text of the frames that it sent last.
//
// Pure functions, callable from any thread.
#pragma once

#include "tools/config/configDocument.h"
#include "tools/lights/datagram.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace mirrorctl {

// One datagram.
struct SentFrame {
    std::size_t panelCount = 0; // of the device; there may be records for some panels only
    std::vector<lights::Record> records;
};

// The frames in device order, without gaps for devices that were sent nothing. Throws
// std::runtime_error if the text is not understood.
std::vector<SentFrame> readSentFrames(const std::string &text);

// Whether any record has a colour other than black.
bool showsLight(const std::vector<SentFrame> &frames);

// The index of each frame's device. The library leaves out devices that were sent nothing, as in
// palette mode while none of a device's panels is due, so the frames are matched to devices by
// their panels. Nothing if they match in several ways, or in none.
std::optional<std::vector<std::size_t>> devicesOf(const std::vector<SentFrame> &frames,
                                                  const std::vector<config::DeviceEntry> &devices);

} // namespace mirrorctl
