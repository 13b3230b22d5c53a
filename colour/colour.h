// Colour records and the conversions between them.
//
// Plain functions of their arguments, callable from any thread. Arithmetic is single precision
// unless a comment says otherwise, and every step from a real number to an integer truncates
// towards zero: panels see exactly the integers that come out, so the rounding is part of the
// design.
#pragma once

#include <cstdint>

// One colour, channels 0 to 255.
struct RGB {
    std::uint8_t r = 0;
    std::uint8_t g = 0;
    std::uint8_t b = 0;
    double spare = 0.0; // always 0.0; nothing reads it
};

// Hue, saturation, lightness.
struct HSL {
    std::int32_t h = 0; // whole degrees, or a bucket index on a scale that HSLToRGB is told
    std::int32_t s = 0; // whole percent
    std::int32_t l = 0; // whole percent
};
