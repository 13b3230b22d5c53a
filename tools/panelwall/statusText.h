// The wall's status as text: a line per device, and what to check when no datagrams arrive.
#pragma once

#include "tools/wall/wall.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace panelwall {

// Where the reason of a device's last malformed datagram goes.
enum class ReasonPlace { SameLine, NextLine };

// A line per device, its columns aligned: number, address and port, how many of its panels have a
// colour, datagrams in the last second, the age of the last one, the number of malformed ones, the
// total, and why the last malformed one was rejected.
std::vector<std::string> deviceLines(const Wall &wall, Clock::time_point now, ReasonPlace place);

// Silence of this length or longer is reported.
inline constexpr std::chrono::seconds tellingSilence{3};

// Empty while datagrams arrive. After three seconds without any, the length of the silence and what
// to check, on one line; `mode` is the document's mirror mode, which decides what silence means,
// and `start` is when the wall began to listen.
std::string describeSilence(const Wall &wall, std::int32_t mode, Clock::time_point start,
                            Clock::time_point now);

// What silence means in a mirror mode, and what to check; one line.
std::string adviseOnSilence(std::int32_t mode);

// A one-line warning while the wall flashes more than three times a second, and for a few seconds
// afterwards, so that it can be read; else empty.
std::string describeFlashes(const Wall &wall, Clock::time_point now);

// One line per pair of a device's panels that have the same identifier in datagrams, eight at most.
std::vector<std::string> describeSharedIds(const Wall &wall);

// The name of a mirror mode, or "unknown mode" and its number.
std::string modeName(std::int32_t mode);

// The text's first `columns` characters (UTF-8); ASCII control characters become '?'.
std::string cutToWidth(std::string_view text, std::size_t columns);

// The text in lines of at most `columns` characters, broken at spaces.
std::vector<std::string> wrap(std::string_view text, std::size_t columns);

} // namespace panelwall
