// A frame and a sample table for given sample pixels, in the order of the table.
#pragma once

#include "colour/frame.h"

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <random>
#include <vector>

namespace test {

constexpr int wholeTable = 6400;

// The pixels are scattered over a larger frame of random colours, and their fourth bytes are
// random: neither may change a result.
class SampledFrame {
public:
    explicit SampledFrame(const std::vector<std::uint32_t> &words) {
        std::mt19937 random(12);
        pixels.resize(words.size() * 2);
        for (std::uint32_t &pixel : pixels)
            pixel = static_cast<std::uint32_t>(random());
        samples.resize(pixels.size());
        std::iota(samples.begin(), samples.end(), 0);
        std::shuffle(samples.begin(), samples.end(), random);
        samples.resize(words.size());
        for (std::size_t i = 0; i < words.size(); ++i) {
            std::uint32_t &pixel = pixels[static_cast<std::size_t>(samples[i])];
            pixel = (pixel & 0xff000000u) | (words[i] & 0xffffffu);
        }
    }

    Frame frame() const {
        return {reinterpret_cast<const unsigned char *>(pixels.data()), pixels.size()};
    }
    const std::int32_t *table() const { return samples.data(); }
    int count() const { return static_cast<int>(samples.size()); }

private:
    std::vector<std::uint32_t> pixels;
    std::vector<std::int32_t> samples;
};

// Appends `count` pixels of a colour.
inline void add(std::vector<std::uint32_t> &words, int count, std::uint32_t colour) {
    words.insert(words.end(), static_cast<std::size_t>(std::max(count, 0)), colour);
}

} // namespace test
