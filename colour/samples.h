// The samples of a frame, one after the other.
#pragma once

#include "colour/conversion.h"
#include "colour/frame.h"

#include <algorithm>

// Calls `use` with the HSL of each of `count` samples, in order. Works in blocks: while one is
// used, the pixels of the next are on their way from memory, and the conversion calculates several
// pixels at once.
template <class Use>
void forEachSample(const Frame &frame, const std::int32_t *samples, int count, Use use) {
    constexpr int blockSize = HSLColumns::capacity;
    std::uint32_t words[blockSize];
    HSLColumns columns;
    for (int begin = 0; begin < count; begin += blockSize) {
        const int length = std::min(blockSize, count - begin);
        for (int i = 0; i < length; ++i)
            words[i] = frame.word(samples[begin + i]);
        wordsToHSL(words, length, columns);

        const int fetched = std::min(blockSize, count - begin - length);
        for (int i = 0; i < length; ++i) {
            if (i < fetched)
                frame.fetch(samples[begin + length + i]);
            use(HSL{columns.h[i], columns.s[i], columns.l[i]});
        }
    }
}
