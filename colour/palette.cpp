#include "colour/palette.h"
#include "colour/conversion.h"
#include "colour/hueBucket.h"
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

    HueHistogram<hueBuckets> histogram;
    forEachSample(frame, samples, count - 1, 1,
                  [&](int number, unsigned hue, const WeightedColour &colour) {
                      const unsigned index = hue * 2 / 9; // 80 buckets in 360 degrees
                      histogram.bucket(number, index).add(colour);
                  });
    HueBucket(&buckets)[hueBuckets] = histogram.total();

    std::vector<RGB> palette;
    palette.reserve(static_cast<std::size_t>(std::min(size, hueBuckets)));
    while (static_cast<int>(palette.size()) < size) {
        // Of equal counts, the first: the lowest bucket.
        HueBucket *most = std::max_element(
            std::begin(buckets), std::end(buckets),
            [](const HueBucket &a, const HueBucket &b) { return a.count() < b.count(); });
        if (most->count() == 0)
            break;
        palette.push_back(
            HSLToRGB({static_cast<std::int32_t>(most - buckets), most->saturation() / most->count(),
                      most->lightness() / most->count()},
                     hueBuckets));
        *most = {};
    }
    return palette;
}
