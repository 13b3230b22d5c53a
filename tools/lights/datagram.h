// Panel frame datagrams: from bytes to records, or to the reason why not. docs/datagrams.md has
// the layouts byte by byte.
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

// What is left of a panel's identifier in a datagram: its low 8 bits (narrow) or 16 bits (wide).
std::uint16_t wireId(Layout layout, std::int32_t panelID);

// How many bytes a datagram with records for so many panels has; without any, all are 0.
std::size_t datagramSize(Layout layout, std::size_t panels);

// The most panels that a device of this layout can have: as many as the count holds (narrow), or as
// fit into a UDP datagram over IPv4 (wide).
std::size_t mostPanels(Layout layout);

struct Record {
    std::uint16_t id = 0; // as in the datagram
    Colour colour;
    std::uint16_t transitionTime = 0;
};

// A datagram that has been read: its records, or in `malformed` the first thing wrong with it, in
// words and on one line. A datagram is taken whole or not at all.
struct Decoding {
    std::vector<Record> records;
    std::string malformed; // empty: the datagram is well-formed
};

// Checks the length against the count, the frame count bytes (1) and the white bytes (0).
Decoding decode(Layout layout, std::span<const std::uint8_t> bytes);

// How many panels of one device bear each identifier as datagrams write it.
using KnownIds = std::map<std::uint16_t, std::size_t>;

// Why these records cannot be meant for a device with these panels: an identifier that no panel
// bears, or one that occurs more often than panels have it. Empty when they can be. Records for
// only some of the panels are fine.
std::string findForeignRecord(const std::vector<Record> &records, const KnownIds &knownIds);

} // namespace lights
