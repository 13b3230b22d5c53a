// Colour records.
//
// The functions on them (in this folder) depend only on their arguments and may be called from any
// thread. Arithmetic is single precision unless a comment says otherwise, and every conversion from
// a real number to an integer truncates towards zero: panels receive exactly these integers, so the
// rounding is part of the design.
#pragma once

#include <cstdint>

// One colour, channels 0 to 255.
struct RGB {
    std::uint8_t r = 0;
    std::uint8_t g = 0;
    std::uint8_t b = 0;
    double spare = 0.0; // always 0.0; unused
};

// Hue, saturation, lightness.
struct HSL {
    std::int32_t h = 0; // whole degrees, or a bucket index (HSLToRGB takes the scale)
    std::int32_t s = 0; // whole percent
    std::int32_t l = 0; // whole percent
};
