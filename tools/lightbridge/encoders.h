// Encodes the pixels of an output into the packets of its protocol.
//
// Pure functions, callable from any thread. They keep nothing between frames: sequence numbers
// follow from the frame's number.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>

namespace lightbridge {

using Bytes = std::span<const std::uint8_t>;
using SenderId = std::array<std::uint8_t, 16>;

// What all frames of an output have in common.
struct Stream {
    std::size_t firstPixel = 0;  // on the receiver
    std::size_t channels = 3;    // bytes per pixel, 3 or 4
    std::uint16_t universe = 0;  // of the receiver's pixel 0
    std::uint8_t priority = 100; // E1.31
    SenderId senderId{};         // E1.31
    std::string senderName = {}; // E1.31; UTF-8, cut after 63 bytes
};

struct Frame {
    std::uint64_t number = 0; // counts the output's frames
    Bytes data;               // the pixels' channels
    bool isLast = false;      // no frame follows
};

// Called for each packet, which is valid during the call. The universe is 0 for protocols without.
using Emit = std::function<void(Bytes packet, std::uint16_t universe)>;

// DDP: at most 1440 bytes a packet; the last one makes the receiver show them all.
void encodeDdp(const Stream &stream, const Frame &frame, const Emit &emit);

// E1.31: a packet per universe of 512 slots, in which pixels are not divided. In the last frame
// they tell receivers that the stream ends.
void encodeE131(const Stream &stream, const Frame &frame, const Emit &emit);

// Art-Net: a packet per universe, as above. After several universes, a packet makes the receiver
// show them all.
void encodeArtNet(const Stream &stream, const Frame &frame, const Emit &emit);

// WLED realtime: DRGB, DRGBW or DNRGB. Without further frames, receivers return to their own effect
// after two seconds; after the last frame they do not.
void encodeWled(const Stream &stream, const Frame &frame, const Emit &emit);

} // namespace lightbridge
