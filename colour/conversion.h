// Conversions between RGB and HSL.
#pragma once

#include "colour/colour.h"

#include <span>

// The smallest and the largest of three.
float Min(float a, float b, float c);
float Max(float a, float b, float c);

// Hue in whole degrees 0 to 359, saturation and lightness in whole percent.
HSL RGBToHSL(RGB rgb);

// The weight of a colour in the dominant one, 1 to 20: lightness gives 1 to 10, saturation 0 to 10
// unless the colour is very dark. Bright, saturated pixels weigh more than dark, grey ones.
int hslBias(HSL hsl);

// Many colours, one array per component.
struct HSLColumns {
    static constexpr int capacity = 256;
    std::uint16_t hue[capacity];
    std::uint16_t saturation[capacity];
    std::uint16_t lightness[capacity];
};

// RGBToHSL of pixel words, several at a time: red in bits 16 to 23, green 8 to 15, blue 0 to 7.
using WordsToHSL = void (*)(const std::uint32_t (&words)[HSLColumns::capacity], HSLColumns &out);

// The implementations that this processor supports, all with the same result; the last is the
// fastest.
std::span<const WordsToHSL> conversions();

// One channel, 0 to 1, of the HSL conversion.
float HueToRGB(float p, float q, float t);

// `hueScale` is the number of hue units in a full turn: 360 for degrees. It must not be 0.
RGB HSLToRGB(HSL hsl, int hueScale);
