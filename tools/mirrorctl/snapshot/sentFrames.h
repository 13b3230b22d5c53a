// The library's text of the frames that it sent last, parsed.
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
    std::size_t panelCount = 0; // of the device, which may be sent records for some panels only
    std::vector<lights::Record> records;
};

// The frames in device order, without a place for devices that were sent nothing. Throws
// std::runtime_error when the text is not understood.
std::vector<SentFrame> readSentFrames(const std::string &text);

// Whether any record is another colour than black.
bool showsLight(const std::vector<SentFrame> &frames);

// For each frame the index of its device. The library leaves out the devices that were sent
// nothing, as palette mode does while none of a device's panels is due; the frames themselves then
// have to tell whose they are, by their panels. Nothing when they fit the devices in several ways,
// or in none.
std::optional<std::vector<std::size_t>> devicesOf(const std::vector<SentFrame> &frames,
                                                  const std::vector<config::DeviceEntry> &devices);

} // namespace mirrorctl
