// A reader of WLED realtime packets for tests, written from the protocol's description and not from
// a sender: DRGB, DRGBW and DNRGB. WARLS is refused.
//
// No packet marks the end of a frame, so the reader holds a strip's pixels and reports which of
// them each packet wrote. It has no clock and no threads: the time-out is only reported.
#pragma once

#include "tests/support/lightReceiver.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace test {

using WledPixel = std::array<std::uint8_t, 4>; // red, green, blue, white

class WledReader {
public:
    struct Reading {
        std::string malformed; // "byte N: " and what is wrong there; empty if accepted
        int protocol = 0;      // 2: DRGB, 3: DRGBW, 4: DNRGB
        int timeout = 0;       // in seconds; 255: never
        std::size_t first = 0; // the first pixel that the packet wrote
        std::size_t count = 0; // how many it wrote
    };

    // A strip of `length` black pixels.
    explicit WledReader(std::size_t length) : strip(length) {}

    // A malformed packet writes no pixel. Packets without white write a white of 0.
    Reading read(const Datagram &packet);

    const std::vector<WledPixel> &pixels() const { return strip; }

private:
    std::vector<WledPixel> strip;
};

} // namespace test
