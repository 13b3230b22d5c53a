// Screens whose dominant colour a test chooses.
#pragma once

#include "colour/colour.h"

#include <cstdint>
#include <vector>

namespace test {

// A screen of 100 x 100 has exactly one sample point a pixel inside its margin of ten.
constexpr int screenSide = 100;

using Pixels = std::vector<std::uint32_t>; // 0xRRGGBB, screenSide rows of screenSide

// A colour whose channels are all at most 12, or at most 15 and near to grey, to the last digit: a
// screen without a prevailing hue, whose samples average to it. Throws std::logic_error for a
// colour that cannot be had.
Pixels averagingTo(RGB wanted);

Pixels plainScreen(std::uint32_t colour);

// The screen whose sample points hold these 6400 words, in the order of the sample table.
Pixels screenSampledAs(const std::vector<std::uint32_t> &words);

// The pixels at the sample points, in the order of the table.
std::vector<std::uint32_t> samplesOf(const Pixels &screen);

} // namespace test
