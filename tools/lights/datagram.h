// Decodes panel frame datagrams, or says why they are malformed. docs/datagrams.md has the layouts
// byte by byte.
//
// Pure functions, callable from any thread. They accept any bytes.
#pragma once

#include "tools/lights/device.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

namespace lights {

enum class Layout { Narrow, Wide };

// Narrow for control version 1, wide for every other.
Layout layoutOf(std::int32_t controlVersion);

// A panel's identifier as datagrams carry it: its low 8 bits (narrow) or 16 bits (wide).
std::uint16_t wireId(Layout layout, std::int32_t panelID);

// The number of bytes in a datagram for `panels` panels; without panels all bytes are 0.
std::size_t datagramSize(Layout layout, std::size_t panels);

// The most panels that a device of this layout can have, limited by the count's range (narrow) or
// by the largest UDP datagram over IPv4 (wide).
std::size_t maxPanels(Layout layout);

struct Record {
    std::uint16_t id = 0; // as in the datagram
    Colour colour;
    std::uint16_t transitionTime = 0;
};

// A decoded datagram: its records or, in `malformed`, its first fault as one line of text. A
// malformed datagram yields no records.
struct Decoding {
    std::vector<Record> records;
    std::string malformed; // empty: the datagram is well-formed
};

// Checks the length against the count, the frame count bytes (1) and the white bytes (0).
Decoding decode(Layout layout, std::span<const std::uint8_t> bytes);

// The number of panels of one device with each identifier, as datagrams carry it.
using KnownIds = std::map<std::uint16_t, std::size_t>;

// Why these records cannot be for a device with these panels: an identifier that no panel has, or
// that occurs more often than panels have it. Empty if they can be. Records for only some of the
// panels are valid.
std::string findForeignRecord(const std::vector<Record> &records, const KnownIds &knownIds);

} // namespace lights
