// The wall in words: a line per device, and what to check when it stays silent.
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
// colour, datagrams in the last second, how long ago the last one came, how many were malformed,
// how many came in all, and the last reason.
std::vector<std::string> deviceLines(const Wall &wall, Clock::time_point now, ReasonPlace place);

// Silence from here on is worth telling.
inline constexpr std::chrono::seconds tellingSilence{3};

// Empty while datagrams come. After three seconds without any, how long it has been and what to
// check, on one line; `mode` is the document's mirror mode, which decides what silence means, and
// `start` is when the wall began to listen.
std::string describeSilence(const Wall &wall, std::int32_t mode, Clock::time_point start,
                            Clock::time_point now);

// What silence means in a mirror mode, and what to check; one line.
std::string adviseOnSilence(std::int32_t mode);

// A warning while the wall flashes more than three times a second, and for some seconds after it
// did, so that it can be read; else empty. One line.
std::string describeFlashes(const Wall &wall, Clock::time_point now);

// One line per pair of panels of a device that datagrams cannot tell apart, a few at most.
std::vector<std::string> describeSharedIds(const Wall &wall);

// The name of a mirror mode, or "unknown mode" and its number.
std::string modeName(std::int32_t mode);

// The text's first `columns` characters (UTF-8); what a terminal would act upon becomes '?'.
std::string cutToWidth(std::string_view text, std::size_t columns);

// The text in lines of at most `columns` characters, broken at spaces.
std::vector<std::string> wrap(std::string_view text, std::size_t columns);

} // namespace panelwall
