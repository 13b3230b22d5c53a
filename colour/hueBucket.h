// Sums over the colours of one range of hues.
#pragma once

#include "colour/conversion.h"

#include <cstring>

// What one colour adds to its bucket.
struct WeightedColour {
    std::uint16_t count;      // the colour's weight
    std::uint16_t saturation; // percent, times the count
    std::uint16_t lightness;  // percent, times the count
    std::uint16_t none;       // 0
};

// Weights the colours. A colour's count is its bias, limited to `maxCount`; with a limit of 1 all
// colours count the same.
void weightColours(const HSLColumns &columns, std::uint16_t maxCount,
                   WeightedColour (&weighted)[HSLColumns::capacity]);

// Adds all parts of a weighted colour at once, so that a colour costs one vector addition.
class HueBucket {
public:
    void add(const WeightedColour &colour) {
        Parts parts;
        std::memcpy(&parts, &colour, sizeof parts);
        sums += __builtin_convertvector(parts, Sums);
    }
    void operator+=(const HueBucket &other) { sums += other.sums; }

    // Sums over the colours added.
    std::int32_t count() const { return static_cast<std::int32_t>(sums[0]); }
    std::int32_t saturation() const { return static_cast<std::int32_t>(sums[1]); }
    std::int32_t lightness() const { return static_cast<std::int32_t>(sums[2]); }

private:
    using Parts = std::uint16_t __attribute__((vector_size(8)));
    using Sums = std::uint32_t __attribute__((vector_size(16)));

    Sums sums = {};
};

// All hues in `size` ranges. On most screens a sample has the same hue as the one before it.
// Alternating between two rows avoids waiting for the sum that was just written.
template <int size> class HueHistogram {
public:
    // The row depends on whether `turn` is even or odd, which should alternate from call to call.
    HueBucket &bucket(int turn, unsigned index) { return rows[turn & 1][index]; }

    // Call once, when everything has been added.
    HueBucket (&total())[size] {
        for (int i = 0; i < size; ++i)
            rows[0][i] += rows[1][i];
        return rows[0];
    }

private:
    HueBucket rows[2][size];
};
