#include "colour/dominantColour.h"
#include "colour/conversion.h"
#include "colour/samples.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <optional>

namespace {

constexpr int hueBuckets = 320;          // of 1.125 degrees
constexpr int overwhelmingWeight = 4479; // a bucket above it is taken however dark it is
constexpr int alternativeWeight = 320;   // least weight of a bucket taken in a dark leader's stead
constexpr int leastLightness = 5;        // percent; below it a bucket counts as dark

// Of all samples of a range of hues. The sums of saturation and of lightness, each multiplied by
// the weight, share a word, so that a sample costs one addition less.
struct Bucket {
    std::int32_t weight = 0;
    std::uint64_t lightnessAndSaturation = 0; // lightness in the upper half

    void add(HSL hsl, int sampleWeight) {
        const std::uint64_t both =
            static_cast<std::uint64_t>(hsl.l) << 32 | static_cast<std::uint64_t>(hsl.s);
        weight += sampleWeight;
        lightnessAndSaturation += both * static_cast<std::uint64_t>(sampleWeight);
    }
    std::int32_t saturation() const {
        return static_cast<std::int32_t>(lightnessAndSaturation & 0xffffffff);
    }
    std::int32_t lightness() const {
        return static_cast<std::int32_t>(lightnessAndSaturation >> 32);
    }
};
using Buckets = Bucket[hueBuckets];

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
struct WeightTable {
    std::uint8_t weights[101][128] = {};

    constexpr WeightTable() {
        for (int l = 0; l <= 100; ++l)
            for (int s = 0; s <= 100; ++s)
                weights[l][s] = static_cast<std::uint8_t>(lightnessWeight(l) +
                                                          (l < 11 ? 0 : saturationWeight(s)));
    }
    int of(HSL hsl) const { return weights[hsl.l][hsl.s]; }
};
constexpr WeightTable weights;

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

// Adds the samples up. `added` is called after each with its bucket's new weight and its number.
template <class Added>
void addUp(const Frame &frame, const std::int32_t *samples, int count, Buckets &buckets,
           Added added) {
    forEachSample(frame, samples, count, [&](HSL hsl) {
        const auto index = static_cast<unsigned>(hsl.h) * 8 / 9; // 320 buckets in 360 degrees
        Bucket &bucket = buckets[index];
        bucket.add(hsl, weights.of(hsl));
        added(bucket.weight, static_cast<std::int32_t>(index));
    });
}

// A leader's hue and averages, for the weight that it had when it took its slot.
HSL average(const Buckets &buckets, const Leader &leader) {
    const Bucket &bucket = buckets[leader.bucket];
    return {leader.bucket, bucket.saturation() / leader.weight, bucket.lightness() / leader.weight};
}

bool canStay(const Leader &heaviest, HSL itsAverage) {
    return heaviest.weight > overwhelmingWeight || itsAverage.l >= leastLightness;
}

// The answer on most screens, found without following the leaders from sample to sample: the
// heaviest bucket, if no other weighs the same and it can stay. Nothing otherwise.
std::optional<HSL> clearLeader(const Frame &frame, const std::int32_t *samples, int count) {
    Buckets buckets = {};
    addUp(frame, samples, count, buckets, [](std::int32_t, std::int32_t) {});
    Leader heaviest;
    for (std::int32_t i = 0; i < hueBuckets; ++i)
        if (buckets[i].weight > heaviest.weight)
            heaviest = {buckets[i].weight, i};
    const auto equals =
        std::count_if(std::begin(buckets), std::end(buckets),
                      [&](const Bucket &bucket) { return bucket.weight == heaviest.weight; });
    if (equals != 1)
        return std::nullopt;
    const HSL itsAverage = average(buckets, heaviest);
    return canStay(heaviest, itsAverage) ? std::optional(itsAverage) : std::nullopt;
}

} // namespace

int hslBias(HSL hsl) {
    return lightnessWeight(hsl.l) + (hsl.l < 11 ? 0 : saturationWeight(hsl.s));
}

RGB dominantColour(const Frame &frame, const std::int32_t *samples, int count) {
    if (const std::optional<HSL> leader = clearLeader(frame, samples, count - 1))
        return HSLToRGB(*leader, hueBuckets);

    Buckets buckets = {};
    Leader leaders[3];
    addUp(frame, samples, count - 1, buckets, [&](std::int32_t weight, std::int32_t bucket) {
        updateLeaders(leaders, weight, bucket);
    });
    const HSL heaviest = average(buckets, leaders[0]);
    if (canStay(leaders[0], heaviest))
        return HSLToRGB(heaviest, hueBuckets);

    // The heaviest hue is nearly black: look for another. A second slot that has the weight but is
    // dark as well settles the matter; the third is then not asked.
    for (const Leader &leader : {leaders[1], leaders[2]}) {
        if (leader.weight < alternativeWeight)
            continue;
        const HSL alternative = average(buckets, leader);
        return HSLToRGB(alternative.l < leastLightness ? heaviest : alternative, hueBuckets);
    }
    std::puts("Resorting to averaging");
    return rootMeanSquare(frame, samples, count);
}
