// Conversions between RGB and HSL.
#pragma once

#include "colour/colour.h"

// The smallest and the largest of three.
float Min(float a, float b, float c);
float Max(float a, float b, float c);

// Hue in whole degrees 0 to 359, saturation and lightness in whole percent.
HSL RGBToHSL(RGB rgb);

// Many colours, by their parts.
struct HSLColumns {
    static constexpr int capacity = 256;
    std::int32_t h[capacity];
    std::int32_t s[capacity];
    std::int32_t l[capacity];
};

// RGBToHSL of `count` pixel words, at most the capacity, several at a time: red in bits 16 to 23,
// green 8 to 15, blue 0 to 7.
void wordsToHSL(const std::uint32_t *words, int count, HSLColumns &out);

// One channel, 0 to 1, of the HSL conversion.
float HueToRGB(float p, float q, float t);

// `hueScale` is the number of hue units in a full turn: 360 for degrees. It must not be 0.
RGB HSLToRGB(HSL hsl, int hueScale);
