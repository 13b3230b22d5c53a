// A reader of DDP packets for tests, written from the protocol's description and not from a sender.
//
// It accepts what a sender of whole frames to the default output may send, and nothing else. All
// frames begin at the same offset, and each packet of a frame continues where the last one ended.
// It has no clock and no threads; bytes are copied.
#pragma once

#include "tests/support/lightReceiver.h"

#include <cstdint>
#include <optional>
#include <string>

namespace test {

struct DdpFrame {
    std::size_t channels = 0; // 3: RGB, 4: RGBW
    Datagram bytes;           // of all its packets, from the first offset on
};

class DdpReader {
public:
    struct Reading {
        std::string malformed;         // "byte N: " and what is wrong there; empty if accepted
        std::optional<DdpFrame> frame; // only where the packet has the push flag
    };

    // Every frame begins at the offset `start`, in bytes.
    explicit DdpReader(std::uint32_t start = 0) : start(start) {}

    // A malformed packet changes nothing: the sequence number that it should have had stays due.
    Reading read(const Datagram &packet);

    // The number of bytes that were accepted after the last push.
    std::size_t unshown() const { return pending.bytes.size(); }

private:
    std::string check(const Datagram &packet) const;

    std::uint32_t start;
    unsigned lastSequence = 0; // 0: no packet yet
    DdpFrame pending;
};

} // namespace test
