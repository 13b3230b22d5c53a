// The most common hues on the screen.
#pragma once

#include "colour/frame.h"

#include <vector>

// At most `size` colours, most frequent hue first, equal counts in rising hue order. Each is a
// bucket of 4.5 degrees with the average saturation and lightness of its samples. The last of the
// `count` samples is left out. Throws std::length_error when `size` is negative.
std::vector<RGB> paletteOf(const Frame &frame, const std::int32_t *samples, int count, int size);
