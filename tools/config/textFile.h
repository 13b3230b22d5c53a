// A whole file in memory.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

namespace config {

// A document larger than this is taken for a mistake (a device file, a film).
inline constexpr std::size_t largestText = 64u << 20;

// For how long a named pipe may be silent before somebody is told that nobody writes into it.
inline constexpr std::chrono::milliseconds pipePatience = std::chrono::seconds(30);

// The contents of the file at `path`; "-" is standard input, read to its end however long that
// takes. Nothing when it cannot be read, with the reason in words in `reason`.
std::optional<std::string> readTextFile(const std::string &path, std::string &reason,
                                        std::chrono::milliseconds patience = pipePatience);

} // namespace config
