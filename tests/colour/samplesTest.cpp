#include "colour/samples.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

// Every count, from below zero to more than two blocks.
TEST(Samples, EachIsUsedOnceAndInOrderWhateverTheirCount) {
    std::mt19937 random(5);
    std::vector<std::uint32_t> words(1000);
    for (std::uint32_t &word : words)
        word = random();
    std::vector<std::int32_t> samples(HSLColumns::capacity * 2 + 9);
    for (std::int32_t &sample : samples) // some are outside the frame
        sample = static_cast<std::int32_t>(random() % 1100) - 50;
    const Frame frame{reinterpret_cast<const unsigned char *>(words.data()), words.size()};

    for (int count = -1; count <= static_cast<int>(samples.size()); ++count) {
        int used = 0;
        int lastNumber = -1;
        forEachSample(
            frame, samples.data(), count, 1,
            [&](int number, int hue, const WeightedColour &colour) {
                ASSERT_LT(used, count);
                const HSL wanted = RGBToHSL(frame.colour(samples[static_cast<std::size_t>(used)]));
                ASSERT_EQ(hue, wanted.h) << used << " of " << count;
                ASSERT_EQ(colour.count, 1);
                ASSERT_EQ(colour.saturation, wanted.s);
                ASSERT_EQ(colour.lightness, wanted.l);
                ASSERT_NE(number % 2, lastNumber % 2); // the histograms rely on alternating numbers
                lastNumber = number;
                ++used;
            });
        ASSERT_EQ(used, std::max(count, 0));
    }
}

} // namespace
