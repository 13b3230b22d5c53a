// What the colours of one range of hues add up to.
#pragma once

#include "colour/conversion.h"

#include <cstring>

// Adds up the parts of a shade side by side, so that a colour costs one addition.
class HueBucket {
public:
    void add(Shade shade) { sums += widened(shade); }

    // Everything times the shade's bias.
    void addBiased(Shade shade) {
        const Parts parts = __builtin_convertvector(widened(shade), Parts);
        sums += __builtin_convertvector(parts * parts[3], Sums);
    }
    void operator+=(const HueBucket &other) { sums += other.sums; }

    // Of the shades added; each counts as often as its bias says if it was added so.
    std::int32_t count() const { return static_cast<std::int32_t>(sums[0]); }
    std::int32_t saturation() const { return static_cast<std::int32_t>(sums[1]); }
    std::int32_t lightness() const { return static_cast<std::int32_t>(sums[2]); }

private:
    using Bytes = std::uint8_t __attribute__((vector_size(4)));
    using Parts = std::uint16_t __attribute__((vector_size(8)));
    using Sums = std::uint32_t __attribute__((vector_size(16)));

    static Sums widened(Shade shade) {
        Bytes bytes;
        std::memcpy(&bytes, &shade, sizeof bytes);
        return __builtin_convertvector(bytes, Sums);
    }

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
