// What the colours of one range of hues add up to.
#pragma once

#include "colour/conversion.h"

#include <cstring>

// What one colour adds to its bucket.
struct Share {
    std::uint16_t count;      // how often the colour counts
    std::uint16_t saturation; // percent, that often
    std::uint16_t lightness;  // percent, that often
    std::uint16_t none;       // 0
};

// Each colour counts as often as its bias says and at most `most` times; at most once makes all of
// them count alike.
void share(const HSLColumns &columns, std::uint16_t most, Share (&shares)[HSLColumns::capacity]);

// Adds up the parts of shares side by side, so that a colour costs one addition.
class HueBucket {
public:
    void add(const Share &share) {
        Parts parts;
        std::memcpy(&parts, &share, sizeof parts);
        sums += __builtin_convertvector(parts, Sums);
    }
    void operator+=(const HueBucket &other) { sums += other.sums; }

    // Of the shares added.
    std::int32_t count() const { return static_cast<std::int32_t>(sums[0]); }
    std::int32_t saturation() const { return static_cast<std::int32_t>(sums[1]); }
    std::int32_t lightness() const { return static_cast<std::int32_t>(sums[2]); }

private:
    using Parts = std::uint16_t __attribute__((vector_size(8)));
    using Sums = std::uint32_t __attribute__((vector_size(16)));

    Sums sums = {};
};

// All hues in `size` ranges. On most screens one sample has the hue of the last; two rows that take
// turns spare it the wait for the sum that was just written.
template <int size> class HueHistogram {
public:
    // Any two rows that alternate from call to call.
    HueBucket &bucket(int turn, unsigned index) { return rows[turn & 1][index]; }

    // To be asked once, when everything has been added.
    HueBucket (&total())[size] {
        for (int i = 0; i < size; ++i)
            rows[0][i] += rows[1][i];
        return rows[0];
    }

private:
    HueBucket rows[2][size];
};
