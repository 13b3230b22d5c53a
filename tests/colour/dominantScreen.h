// Screens whose dominant colour a test chooses.
#pragma once

#include "colour/colour.h"

#include <cstdint>
#include <vector>

namespace test {

// On a screen of 100 x 100, each pixel inside the margin of ten is one sample point.
constexpr int screenSide = 100;

using Pixels = std::vector<std::uint32_t>; // 0xRRGGBB, screenSide rows of screenSide

// A screen without a dominant hue, whose samples average exactly to `wanted`. Works if all channels
// are at most 12, or at most 15 and nearly grey; throws std::logic_error if no such screen exists.
Pixels averagingTo(RGB wanted);

Pixels plainScreen(std::uint32_t colour);

// The screen whose sample points hold these 6400 words, in the order of the sample table.
Pixels screenSampledAs(const std::vector<std::uint32_t> &words);

// The pixels at the sample points, in the order of the table.
std::vector<std::uint32_t> samplesOf(const Pixels &screen);

} // namespace test
