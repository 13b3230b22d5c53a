#include "colour/palette.h"
#include "colour/conversion.h"
#include "colour/samples.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

namespace {
constexpr int hueBuckets = 80; // of 4.5 degrees
}

std::vector<RGB> paletteOf(const Frame &frame, const std::int32_t *samples, int count, int size) {
    if (size < 0)
        throw std::length_error("negative palette size");

    std::int32_t paletteCount[hueBuckets] = {};
    std::int32_t paletteSaturation[hueBuckets] = {};
    std::int32_t paletteLightness[hueBuckets] = {};
    forEachSample(frame, samples, count - 1, [&](HSL hsl) {
        const int bucket = hsl.h * 2 / 9; // 80 buckets in 360 degrees
        paletteCount[bucket] += 1;
        paletteSaturation[bucket] += hsl.s;
        paletteLightness[bucket] += hsl.l;
    });

    std::vector<RGB> palette;
    palette.reserve(static_cast<std::size_t>(std::min(size, hueBuckets)));
    while (static_cast<int>(palette.size()) < size) {
        // The first of equal counts: the lowest bucket.
        const auto most = std::max_element(std::begin(paletteCount), std::end(paletteCount));
        if (*most == 0)
            break;
        const std::int32_t bucket = static_cast<std::int32_t>(most - std::begin(paletteCount));
        palette.push_back(
            HSLToRGB({bucket, paletteSaturation[bucket] / *most, paletteLightness[bucket] / *most},
                     hueBuckets));
        *most = 0;
    }
    return palette;
}
