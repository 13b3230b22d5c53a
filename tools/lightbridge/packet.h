// A packet in the making, and the division of pixels into universes.
#pragma once

#include "tools/lightbridge/encoders.h"

#include <algorithm>
#include <string_view>

namespace lightbridge {

// Numbers are big-endian unless their function says otherwise. The caller keeps to the capacity,
// which no protocol exceeds.
class Packet {
public:
    void put8(std::size_t value) { bytes[length++] = static_cast<std::uint8_t>(value); }
    void put16(std::size_t value) {
        put8(value >> 8);
        put8(value);
    }
    void put16LittleEndian(std::size_t value) {
        put8(value);
        put8(value >> 8);
    }
    void put32(std::size_t value) {
        put16(value >> 16);
        put16(value);
    }
    void put(Bytes more) {
        std::copy(more.begin(), more.end(), bytes.begin() + static_cast<std::ptrdiff_t>(length));
        length += more.size();
    }
    // The text, cut or filled with zeros to `size` bytes; the last one is 0.
    void putText(std::string_view text, std::size_t size) {
        for (std::size_t i = 0; i < size; ++i)
            put8(i < text.size() && i + 1 < size ? static_cast<std::uint8_t>(text[i]) : 0);
    }
    // Two bytes: four bits of flags, and the number of bytes from here to the packet's end.
    void putFlagsAndLength(std::size_t size) { put16(0x7000 | (size - length)); }

    Bytes all() const { return {bytes.data(), length}; }

private:
    std::array<std::uint8_t, 1472> bytes; // of an unfragmented datagram over Ethernet
    std::size_t length = 0;
};

inline constexpr std::size_t universeSlots = 512;

// Calls `handle(universe, slots)` for each universe with the stream's pixels. Slots before the
// first pixel are 0.
template <typename Handle>
void forEachUniverse(const Stream &stream, Bytes data, const Handle &handle) {
    const std::size_t pixels = universeSlots / stream.channels;
    const std::size_t size = pixels * stream.channels;
    std::size_t universe = stream.universe + stream.firstPixel / pixels;
    std::size_t begin = stream.firstPixel % pixels * stream.channels;
    for (; !data.empty(); ++universe, begin = 0) {
        std::array<std::uint8_t, universeSlots> slots{};
        const Bytes part = data.first(std::min(data.size(), size - begin));
        std::copy(part.begin(), part.end(), slots.begin() + static_cast<std::ptrdiff_t>(begin));
        handle(static_cast<std::uint16_t>(universe), Bytes(slots.data(), begin + part.size()));
        data = data.subspan(part.size());
    }
}

} // namespace lightbridge
