// The screen-wide sample grid that the colour analysis reads.
#pragma once

#include <cstdint>

// Capacity of the grid: nominally 80 by 80 points.
constexpr int screenSampleCount = 6400;

// Writes the pixel indices of a grid inside a margin of 10 %, column by column, into
// `samplePixels` (screenSampleCount entries). Points beyond the capacity are dropped; on a small
// screen the entries past the last point are not changed.
void fillScreenGrid(std::uint64_t screenWidth, std::uint64_t screenHeight,
                    std::int32_t *samplePixels);
