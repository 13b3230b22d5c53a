#include "colour/dominantColour.h"
#include "colour/bias.h"
#include "colour/conversion.h"
#include "colour/hueBucket.h"
#include "colour/samples.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <optional>

namespace {

constexpr int hueBuckets = 320;          // of 1.125 degrees
constexpr int overwhelmingWeight = 4479; // a bucket above it is taken however dark it is
constexpr int alternativeWeight = 320;   // least weight of a bucket that may replace a dark leader
constexpr int leastLightness = 5;        // percent; below it a bucket counts as dark

using Buckets = HueBucket[hueBuckets];

struct Leader {
    std::int32_t weight = 0;
    std::int32_t bucket = -1;
};

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

// The bucket of a hue in degrees.
unsigned bucketOf(unsigned hue) {
    return hue * 8 / 9;
}

// A leader's hue and averages; the divisor is the weight that it had when it took its slot.
HSL average(const Buckets &buckets, const Leader &leader) {
    const HueBucket &bucket = buckets[leader.bucket];
    return {leader.bucket, bucket.saturation() / leader.weight, bucket.lightness() / leader.weight};
}

bool canStay(const Leader &heaviest, HSL itsAverage) {
    return heaviest.weight > overwhelmingWeight || itsAverage.l >= leastLightness;
}

// The result on most screens, found without updating the leaders for every sample: the heaviest
// bucket, if no other has the same weight and it can stay. Nothing otherwise.
std::optional<HSL> clearLeader(const Frame &frame, const std::int32_t *samples, int count) {
    HueHistogram<hueBuckets> histogram;
    forEachSample(frame, samples, count, maxBias,
                  [&](int number, unsigned hue, const WeightedColour &colour) {
                      histogram.bucket(number, bucketOf(hue)).add(colour);
                  });
    const Buckets &buckets = histogram.total();
    Leader heaviest;
    for (std::int32_t i = 0; i < hueBuckets; ++i)
        if (buckets[i].count() > heaviest.weight)
            heaviest = {buckets[i].count(), i};
    const auto equals =
        std::count_if(std::begin(buckets), std::end(buckets),
                      [&](const HueBucket &bucket) { return bucket.count() == heaviest.weight; });
    if (equals != 1)
        return std::nullopt;
    const HSL itsAverage = average(buckets, heaviest);
    return canStay(heaviest, itsAverage) ? std::optional(itsAverage) : std::nullopt;
}

} // namespace

RGB dominantColour(const Frame &frame, const std::int32_t *samples, int count) {
    if (const std::optional<HSL> leader = clearLeader(frame, samples, count - 1))
        return HSLToRGB(*leader, hueBuckets);

    Buckets buckets;
    Leader leaders[3];
    forEachSample(
        frame, samples, count - 1, maxBias, [&](int, unsigned hue, const WeightedColour &colour) {
            const unsigned index = bucketOf(hue);
            buckets[index].add(colour);
            updateLeaders(leaders, buckets[index].count(), static_cast<std::int32_t>(index));
        });
    const HSL heaviest = average(buckets, leaders[0]);
    if (canStay(leaders[0], heaviest))
        return HSLToRGB(heaviest, hueBuckets);

    // The heaviest hue is nearly black: look for another. If the second slot has the weight but is
    // dark as well, the heaviest stays; the third slot is not considered.
    for (const Leader &leader : {leaders[1], leaders[2]}) {
        if (leader.weight < alternativeWeight)
            continue;
        const HSL alternative = average(buckets, leader);
        return HSLToRGB(alternative.l < leastLightness ? heaviest : alternative, hueBuckets);
    }
    std::puts("Resorting to averaging");
    return rootMeanSquare(frame, samples, count);
}
