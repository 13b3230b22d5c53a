#include "colour/frame.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

namespace {

Frame frameOf(const std::vector<std::uint32_t> &words) {
    return {reinterpret_cast<const unsigned char *>(words.data()), words.size()};
}

TEST(Frame, BytesAreBlueGreenRedAlpha) {
    const unsigned char bytes[] = {1, 2, 3, 99, 4, 5, 6, 0};
    const Frame frame{bytes, 2};
    EXPECT_EQ(frame.colour(0).r, 3);
    EXPECT_EQ(frame.colour(0).g, 2);
    EXPECT_EQ(frame.colour(0).b, 1);
    EXPECT_EQ(frame.colour(1).r, 6);
    EXPECT_EQ(frame.word(0) & 0xffffff, 0x030201u);
}

TEST(Frame, OffTheFrameIsBlack) {
    const std::vector<std::uint32_t> words(4, 0xffffffff);
    const Frame frame = frameOf(words);
    EXPECT_NE(frame.word(3), 0u);
    for (const std::int32_t index : {-1, 4, std::numeric_limits<std::int32_t>::min(),
                                     std::numeric_limits<std::int32_t>::max()})
        EXPECT_EQ(frame.word(index), 0u) << index;
    EXPECT_EQ((Frame{nullptr, 100}.word(5)), 0u);
}

TEST(Frame, HoldsIndicesFromFirstToLast) {
    const std::vector<std::uint32_t> words(4);
    const Frame frame = frameOf(words);
    for (const std::int32_t off : {-1, 4, std::numeric_limits<std::int32_t>::min()}) {
        const std::int32_t indices[] = {0, 3, off};
        EXPECT_TRUE(frame.holds(indices, 2));
        EXPECT_FALSE(frame.holds(indices, 3)) << off;
        EXPECT_TRUE(frame.holds(indices, -1));
        EXPECT_FALSE((Frame{nullptr, 4}.holds(indices, 1)));
    }
}

TEST(RootMeanSquare, WeighsBrightPixelsMore) {
    const std::vector<std::uint32_t> words = {0x00000000, 0x00ff0000};
    const std::int32_t both[] = {0, 1};
    const RGB average = rootMeanSquare(frameOf(words), both, 2);
    EXPECT_EQ(average.r, 180); // a plain mean would give 127
    EXPECT_EQ(average.g, 0);
    EXPECT_EQ(average.b, 0);
}

TEST(RootMeanSquare, OfPureRedIsPureRed) {
    const std::vector<std::uint32_t> words(100, 0xaaff0000);
    std::vector<std::int32_t> all(100);
    std::iota(all.begin(), all.end(), 0);
    const RGB average = rootMeanSquare(frameOf(words), all.data(), 100);
    EXPECT_EQ(average.r, 255);
    EXPECT_EQ(average.g, 0);
    EXPECT_EQ(average.b, 0);
    EXPECT_EQ(average.spare, 0.0);
}

TEST(RootMeanSquare, OfNothingIsBlack) {
    const std::vector<std::uint32_t> words(1, 0xffffffff);
    const std::int32_t index = 0;
    for (const int count : {0, -1, std::numeric_limits<int>::min()})
        EXPECT_EQ(rootMeanSquare(frameOf(words), &index, count).r, 0);
    EXPECT_EQ(rootMeanSquareOnFrame(frameOf(words), &index, 0).r, 0);
}

// Sums of squares on both sides of each step of the result.
TEST(RootMeanSquare, IsTruncatedAtEveryStep) {
    constexpr int count = 100;
    std::vector<std::int32_t> all(count);
    std::iota(all.begin(), all.end(), 0);
    for (int wanted = 1; wanted <= 240; ++wanted)
        for (const int change : {-1, 0}) {
            std::vector<std::uint32_t> words(count);
            int left = count * wanted * wanted + change;
            for (auto &word : words) {
                word = std::min(255u, static_cast<std::uint32_t>(std::sqrt(left)));
                left -= static_cast<int>(word * word);
            }
            ASSERT_EQ(left, 0);
            ASSERT_EQ(rootMeanSquare(frameOf(words), all.data(), count).b, wanted + change);
        }
}

// Each channel against plain integer arithmetic. The counts include the whole screen's 6400
// samples.
TEST(RootMeanSquare, AgreesWithAPlainReference) {
    std::mt19937 random(3);
    std::vector<std::uint32_t> words(6400);
    std::vector<std::int32_t> indices(6400);
    for (int round = 0; round < 2000; ++round) {
        const int count = round % 10 == 0 ? 6400 : 1 + static_cast<int>(random() % 200);
        const std::uint32_t mask =
            round % 3 == 0 ? 0xffffffff : static_cast<std::uint32_t>(random());
        for (auto &word : words)
            word = static_cast<std::uint32_t>(random()) & mask;
        for (auto &index : indices)
            index = static_cast<std::int32_t>(random() % words.size());
        const RGB average = rootMeanSquare(frameOf(words), indices.data(), count);
        std::uint32_t sums[3] = {};
        for (int i = 0; i < count; ++i)
            for (int channel = 0; channel < 3; ++channel) {
                const std::uint32_t value =
                    words[static_cast<std::size_t>(indices[static_cast<std::size_t>(i)])] >>
                        (8 * channel) &
                    0xff;
                sums[channel] += value * value;
            }
        const auto root = [&](int channel) {
            return static_cast<int>(std::sqrt(sums[channel] / static_cast<std::uint32_t>(count)));
        };
        const RGB unasked = rootMeanSquareOnFrame(frameOf(words), indices.data(), count);
        for (const RGB &colour : {average, unasked}) {
            ASSERT_EQ(colour.b, root(0));
            ASSERT_EQ(colour.g, root(1));
            ASSERT_EQ(colour.r, root(2));
        }
    }
}

} // namespace
