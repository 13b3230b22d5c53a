#include "colour/dominantColour.h"
#include "colour/conversion.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr int hueBuckets = 320;          // of 1.125 degrees
constexpr int overwhelmingWeight = 4479; // a bucket above it is taken however dark it is
constexpr int alternativeWeight = 320;   // least weight of a bucket taken in a dark leader's stead
constexpr int leastLightness = 5;        // percent; below it a bucket counts as dark

struct Leader {
    std::int32_t weight = 0;
    std::int32_t bucket = -1;
};

// The leaders are not a sorted top three: a new weight overwrites the first slot that it beats,
// the earlier occupant is not moved down, and one bucket may hold several slots.
void updateLeaders(Leader (&leaders)[3], std::int32_t weight, std::int32_t bucket) {
    for (Leader &leader : leaders) {
        if (weight > leader.weight) {
            leader = {weight, bucket};
            return;
        }
    }
}

} // namespace

int hslBias(HSL hsl) {
    const int lightness = std::clamp(hsl.l / 3, 1, 10);
    if (hsl.l < 11)
        return lightness;
    return lightness + std::min(hsl.s / 4, 10);
}

RGB dominantColour(const Frame &frame, const std::int32_t *samples, int count) {
    std::int32_t weightTotal[hueBuckets] = {};
    std::int32_t saturationTotal[hueBuckets] = {};
    std::int32_t lightnessTotal[hueBuckets] = {};
    Leader leaders[3];

    for (int i = 0; i < count - 1; ++i) {
        const HSL hsl = RGBToHSL(frame.colour(samples[i]));
        const int bucket = static_cast<int>(static_cast<float>(hsl.h) * 320.0f / 360.0f);
        const int weight = hslBias(hsl);
        weightTotal[bucket] += weight;
        saturationTotal[bucket] += hsl.s * weight;
        lightnessTotal[bucket] += hsl.l * weight;
        updateLeaders(leaders, weightTotal[bucket], bucket);
    }

    const auto average = [&](const Leader &leader) {
        return HSL{leader.bucket, saturationTotal[leader.bucket] / leader.weight,
                   lightnessTotal[leader.bucket] / leader.weight};
    };
    const HSL heaviest = average(leaders[0]);
    if (leaders[0].weight > overwhelmingWeight || heaviest.l >= leastLightness)
        return HSLToRGB(heaviest, hueBuckets);

    // The heaviest hue is nearly black: look for another. A second slot that has the weight but is
    // dark as well settles the matter; the third is then not asked.
    for (const Leader &leader : {leaders[1], leaders[2]}) {
        if (leader.weight < alternativeWeight)
            continue;
        const HSL alternative = average(leader);
        return HSLToRGB(alternative.l < leastLightness ? heaviest : alternative, hueBuckets);
    }
    std::puts("Resorting to averaging");
    return rootMeanSquare(frame, samples, count);
}
