// Panel frame datagrams: from bytes to records, or to the reason why not. docs/datagrams.md has
// the layouts byte by byte.
//
// Pure functions, callable from any thread. They accept any bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

namespace panelwall {

enum class Layout { narrow, wide };

// Narrow for control version 1, wide for every other.
Layout layoutOf(std::int32_t controlVersion);

// What is left of a panel's identifier in a datagram: its low 8 bits (narrow) or 16 bits (wide).
std::uint16_t wireId(Layout layout, std::int32_t panelID);

struct Record {
    std::uint16_t id = 0; // as in the datagram
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
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

} // namespace panelwall
