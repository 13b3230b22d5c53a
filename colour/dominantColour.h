// The one colour that stands for the whole screen.
#pragma once

#include "colour/frame.h"

// Finds the heaviest hue among the first `count` - 1 of `count` samples; the last one is left out
// of the histogram. When no hue carries enough weight, prints "Resorting to averaging" and gives
// the root mean square of all `count` samples. Mirroring thread; no allocation.
RGB dominantColour(const Frame &frame, const std::int32_t *samples, int count);
