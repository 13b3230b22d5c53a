#include "colour/frame.h"

#include <cmath>

namespace {

// The four bytes of a pixel, and room for the sum of the squares of each.
using Bytes = std::uint8_t __attribute__((vector_size(4)));
using Sums = std::uint32_t __attribute__((vector_size(16)));

} // namespace

RGB rootMeanSquare(const Frame &frame, const std::int32_t *indices, int count) {
    if (count < 1 || frame.bytes == nullptr)
        return {};
    Sums sums = {}; // blue, green, red and the fourth byte, which nobody reads
    for (int i = 0; i < count; ++i) {
        const std::uint32_t word = frame.word(indices[i]);
        Bytes bytes;
        std::memcpy(&bytes, &word, sizeof bytes);
        const Sums channels = __builtin_convertvector(bytes, Sums);
        sums += channels * channels;
    }
    const auto root = [count](std::uint32_t sum) {
        const std::uint32_t meanSquare = sum / static_cast<std::uint32_t>(count);
        return static_cast<std::uint8_t>(std::sqrt(static_cast<double>(meanSquare)));
    };
    return {root(sums[2]), root(sums[1]), root(sums[0])};
}
