// Conversions between RGB and HSL.
#pragma once

#include "colour/colour.h"

// The smallest and the largest of three.
float Min(float a, float b, float c);
float Max(float a, float b, float c);

// Hue in whole degrees 0 to 359, saturation and lightness in whole percent.
HSL RGBToHSL(RGB rgb);

// What of a colour follows from its least and its greatest channel alone, a byte each.
struct Shade {
    std::uint8_t one;        // 1, so that adding shades up counts them
    std::uint8_t saturation; // percent
    std::uint8_t lightness;  // percent
    std::uint8_t bias;       // hslBias()
};

// The weight of a colour in the dominant one, 1 to 20: lightness gives 1 to 10, saturation 0 to 10
// unless the colour is very dark. Bright, saturated pixels have more say than dark, grey ones.
int hslBias(HSL hsl);

// Many colours, by their parts.
class HSLColumns {
public:
    static constexpr int capacity = 256;
    std::int32_t hue[capacity];
    std::uint32_t channelPair[capacity]; // number of the pair of least and greatest channel

    // Looked up: there are few enough pairs.
    Shade shade(int i) const { return shades[channelPair[i]]; }

private:
    static const Shade *const shades;
};

// RGBToHSL of pixel words, several at a time: red in bits 16 to 23, green 8 to 15, blue 0 to 7.
void wordsToHSL(const std::uint32_t (&words)[HSLColumns::capacity], HSLColumns &out);

// One channel, 0 to 1, of the HSL conversion.
float HueToRGB(float p, float q, float t);

// `hueScale` is the number of hue units in a full turn: 360 for degrees. It must not be 0.
RGB HSLToRGB(HSL hsl, int hueScale);
