// The library's text of the frames that it sent last, taken apart.
//
// Pure functions, callable from any thread.
#pragma once

#include "tools/mirrorctl/swatch.h"

#include <cstddef>
#include <string>
#include <vector>

namespace mirrorctl {

// One panel's record in a datagram.
struct SentRecord {
    unsigned id = 0; // as in the datagram
    Colour colour;
};

// One datagram.
struct SentFrame {
    std::size_t panelCount = 0; // of the device, which may be sent records for some panels only
    std::vector<SentRecord> records;
};

// Takes the text apart: the frames in device order, without a place for devices that were sent
// nothing. Throws std::runtime_error when it is not understood.
std::vector<SentFrame> readSentFrames(const std::string &text);

// Whether any record is another colour than black.
bool showsLight(const std::vector<SentFrame> &frames);

} // namespace mirrorctl
