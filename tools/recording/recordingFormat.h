// The parts of the recording format that writer and reader share. docs/recordings.md describes the
// whole format, byte by byte.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace panelwall {

// A byte above 127 distinguishes it from text; both kinds of line end reveal a transfer that
// converted them.
inline constexpr std::string_view recordingMagic{"\x89PWR\r\n\x1a\n", 8};
inline constexpr std::uint8_t recordingVersion = 1;

// A UDP datagram's length field has 16 bits.
inline constexpr std::uint64_t longestRecordedDatagram = 65535;

// Enough for more than a hundred thousand panels.
inline constexpr std::uint64_t longestRecordedDocument = 16u << 20;

// Over a hundred years; additions are far from overflowing.
inline constexpr std::uint64_t longestRecordedTime = 1ull << 52; // microseconds

// Appends a number: seven bits per byte, low bits first, the high bit set in all but the last.
inline void appendNumber(std::string &bytes, std::uint64_t number) {
    while (number >= 0x80) {
        bytes += static_cast<char>(number | 0x80);
        number >>= 7;
    }
    bytes += static_cast<char>(number);
}

} // namespace panelwall
