// Shared by the tests of the wall's parts.
#pragma once

#include "tools/wall/wall.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace test {

using Bytes = std::vector<std::uint8_t>;

// A moment to count from.
inline const panelwall::Clock::time_point start{std::chrono::hours(5)};

inline config::Document oneDevice(std::int32_t controlVersion,
                                  std::vector<config::PanelEntry> panels,
                                  double scaleFactor = 1.0) {
    return {1, 0, {{"127.0.41.1", controlVersion, 0, scaleFactor, std::move(panels)}}};
}

} // namespace test
