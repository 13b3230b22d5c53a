#include "colour/dominantColour.h"
#include "colour/conversion.h"
#include "colour/samples.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr int hueBuckets = 320;          // of 1.125 degrees
constexpr int overwhelmingWeight = 4479; // a bucket above it is taken however dark it is
constexpr int alternativeWeight = 320;   // least weight of a bucket taken in a dark leader's stead
constexpr int leastLightness = 5;        // percent; below it a bucket counts as dark

// Of all samples of a range of hues; saturation and lightness are multiplied by the weight.
struct Bucket {
    std::int32_t weight = 0;
    std::int32_t saturation = 0;
    std::int32_t lightness = 0;
};

struct Leader {
    std::int32_t weight = 0;
    std::int32_t bucket = -1;
};

constexpr int lightnessWeight(int percent) {
    return std::clamp(percent / 3, 1, 10);
}
constexpr int saturationWeight(int percent) {
    return std::min(percent / 4, 10);
}

// hslBias() of what RGBToHSL() gives, looked up.
struct WeightTables {
    std::uint8_t lightness[101] = {};
    std::uint8_t saturation[101] = {};

    constexpr WeightTables() {
        for (int percent = 0; percent <= 100; ++percent) {
            lightness[percent] = static_cast<std::uint8_t>(lightnessWeight(percent));
            saturation[percent] = static_cast<std::uint8_t>(saturationWeight(percent));
        }
    }
    int of(HSL hsl) const { return lightness[hsl.l] + (hsl.l < 11 ? 0 : saturation[hsl.s]); }
};
constexpr WeightTables weights;

// The leaders are not a sorted top three: a new weight overwrites the first slot that it beats,
// the earlier occupant is not moved down, and one bucket may hold several slots.
void updateLeaders(Leader (&leaders)[3], std::int32_t weight, std::int32_t bucket) {
    if (weight <= leaders[2].weight) // the slots' weights never rise from one slot to the next
        return;
    for (Leader &leader : leaders) {
        if (weight > leader.weight) {
            leader = {weight, bucket};
            return;
        }
    }
}

} // namespace

int hslBias(HSL hsl) {
    return lightnessWeight(hsl.l) + (hsl.l < 11 ? 0 : saturationWeight(hsl.s));
}

RGB dominantColour(const Frame &frame, const std::int32_t *samples, int count) {
    Bucket buckets[hueBuckets] = {};
    Leader leaders[3];

    forEachSample(frame, samples, count - 1, [&](HSL hsl) {
        const int index = hsl.h * 8 / 9; // 320 buckets in 360 degrees
        const int weight = weights.of(hsl);
        Bucket &bucket = buckets[index];
        bucket.weight += weight;
        bucket.saturation += hsl.s * weight;
        bucket.lightness += hsl.l * weight;
        updateLeaders(leaders, bucket.weight, index);
    });

    const auto average = [&](const Leader &leader) {
        const Bucket &bucket = buckets[leader.bucket];
        return HSL{leader.bucket, bucket.saturation / leader.weight,
                   bucket.lightness / leader.weight};
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
