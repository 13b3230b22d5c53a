#include "colour/frame.h"

#include <algorithm>
#include <cmath>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace {

// The bytes of some pixels: blue, green, red and a fourth, whose sum is not used.
using OnePixel = std::uint8_t __attribute__((vector_size(4)));
using TwoPixels = std::uint8_t __attribute__((vector_size(8)));
using Pairs = std::int16_t __attribute__((vector_size(16)));
using Squares = std::int32_t __attribute__((vector_size(32)));
using Sums = std::int32_t __attribute__((vector_size(16))); // wraps like unsigned numbers
using UnsignedSums = std::uint32_t __attribute__((vector_size(16)));
using Means = double __attribute__((vector_size(32)));

OnePixel bytesOf(std::uint32_t word) {
    OnePixel bytes;
    std::memcpy(&bytes, &word, sizeof bytes);
    return bytes;
}

// The squares of two pixels' bytes, added channel by channel.
Sums squares(std::uint32_t first, std::uint32_t second) {
    const TwoPixels pairs =
        __builtin_shufflevector(bytesOf(first), bytesOf(second), 0, 4, 1, 5, 2, 6, 3, 7);
    const Pairs wide = __builtin_convertvector(pairs, Pairs);
#ifdef __SSE2__
    return Sums(_mm_madd_epi16(__m128i(wide), __m128i(wide))); // as below, in one instruction
#else
    const Squares squared =
        __builtin_convertvector(wide, Squares) * __builtin_convertvector(wide, Squares);
    return __builtin_shufflevector(squared, squared, 0, 2, 4, 6) +
           __builtin_shufflevector(squared, squared, 1, 3, 5, 7);
#endif
}

// `word(i)` is pixel i of `count`.
template <class Word> RGB meanOf(int count, Word word) {
    Sums even = {};
    Sums odd = {};
    int i = 0;
    for (; i < count - 3; i += 4) {
        even += squares(word(i), word(i + 1));
        odd += squares(word(i + 2), word(i + 3));
    }
    for (; i < count; ++i)
        even += squares(word(i), 0);
    // A root that is truncated is the same with or without a truncated mean: below the square of a
    // whole number, a mean of 32-bit numbers stays below it by far more than a double's precision.
    const Means means =
        __builtin_convertvector(UnsignedSums(even + odd), Means) / static_cast<double>(count);
    const auto root = [](double mean) { return static_cast<std::uint8_t>(std::sqrt(mean)); };
    return {root(means[2]), root(means[1]), root(means[0])};
}

} // namespace

bool Frame::holds(const std::int32_t *indices, int count) const {
    return bytes != nullptr && std::all_of(indices, indices + std::max(count, 0), [this](auto i) {
               return static_cast<std::uint64_t>(static_cast<std::int64_t>(i)) < pixelCount;
           });
}

RGB rootMeanSquare(const Frame &frame, const std::int32_t *indices, int count) {
    if (count < 1 || frame.bytes == nullptr)
        return {};
    return meanOf(count, [&](int i) { return frame.word(indices[i]); });
}

RGB rootMeanSquareOnFrame(const Frame &frame, const std::int32_t *indices, int count) {
    if (count < 1)
        return {};
    return meanOf(count, [&](int i) { return frame.wordOnFrame(indices[i]); });
}
