// The rules of the colour analysis a second time, written as plainly as possible, for tests to
// compare with the library. It shares only the two records with the library; where the library is
// clever, this is slow.
#pragma once

#include "colour/colour.h"

#include <cstdint>
#include <string>
#include <vector>

namespace reference {

float least(float a, float b, float c);
float greatest(float a, float b, float c);
HSL hslOf(RGB rgb);
float channelOf(float p, float q, float t);
RGB rgbOf(HSL hsl, int scale);
int weightOf(HSL hsl);

// 0xRRGGBB.
std::uint32_t packed(RGB rgb);
RGB unpacked(std::uint32_t word);

// Which rule gave the dominant colour.
enum class Rule {
    Heavy,          // the heaviest bucket weighs so much that its darkness does not matter
    Bright,         // the heaviest bucket is bright enough
    Second,         // the bucket of slot 1 stands in for a dark one
    Third,          // the bucket of slot 2 stands in for a dark one
    DarkSubstitute, // the substitute is dark as well, so the heaviest bucket stays
    Average,        // no bucket is suitable
};

struct Leader {
    int weight = 0;
    int bucket = -1;
};

struct Dominant {
    RGB colour;
    Rule rule;
    Leader leaders[3];
    HSL chosen; // its hue is one of 320 buckets; not set when averaged
};

// `words`: the pixels at the sample points, in the order of the sample table.
Dominant dominantOf(const std::vector<std::uint32_t> &words);
std::vector<RGB> paletteOf(const std::vector<std::uint32_t> &words, int size);

// The root mean square of all words.
RGB averageOf(const std::vector<std::uint32_t> &words);

// The JSON text of a palette, as the host receives it.
std::string paletteText(const std::vector<RGB> &palette);

// Whether a mode that sends only changes must send `now` after `last`.
bool differs(RGB now, RGB last);

} // namespace reference
