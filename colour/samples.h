// Iterates over the samples of a frame.
#pragma once

#include "colour/conversion.h"
#include "colour/frame.h"
#include "colour/hueBucket.h"

#include <algorithm>

// For each of `count` samples, in order, calls `use` with a number that alternates between even and
// odd, the hue and the weighted colour, whose count is at most `maxCount`. Works in blocks: while
// one is used, the pixels of the next are prefetched, and the conversion calculates several pixels
// at once.
template <class Use>
void forEachSample(const Frame &frame, const std::int32_t *samples, int count,
                   std::uint16_t maxCount, Use use) {
    constexpr int blockSize = HSLColumns::capacity;
    std::uint32_t words[blockSize] = {};
    HSLColumns columns;
    WeightedColour weighted[blockSize];
    const WordsToHSL wordsToHSL = conversions().back();
    for (int begin = 0; begin < count; begin += blockSize) {
        const int length = std::min(blockSize, count - begin);
        for (int i = 0; i < length; ++i)
            words[i] = frame.word(samples[begin + i]);
        wordsToHSL(words, columns);
        weightColours(columns, maxCount, weighted);

        const int fetched = std::min(blockSize, count - begin - length);
        int i = 0;
        const auto useNext = [&] {
            use(i, columns.hue[i], weighted[i]);
            ++i;
        };
        while (i < fetched - 1) {
            frame.fetch(samples[begin + length + i]);
            useNext();
            frame.fetch(samples[begin + length + i]);
            useNext();
        }
        while (i < length - 1) {
            useNext();
            useNext();
        }
        if (i < length)
            useNext();
    }
}
