// The one colour that represents the whole screen.
#pragma once

#include "colour/frame.h"

// Finds the heaviest hue among the first `count` - 1 of `count` samples; the last one is left out
// of the histogram. When that hue is dark and no hue has enough weight, returns the root mean
// square of all `count` samples and prints "Resorting to averaging". Mirroring thread; no
// allocation.
RGB dominantColour(const Frame &frame, const std::int32_t *samples, int count);
