#include "colour/palette.h"
#include "tests/colour/reference.h"
#include "tests/colour/sampledFrame.h"

#include <gtest/gtest.h>
#include <limits>
#include <stdexcept>

using test::add;

namespace {

using Words = std::vector<std::uint32_t>;

Words packed(const std::vector<RGB> &colours) {
    Words words;
    for (const RGB &colour : colours) {
        words.push_back(reference::packed(colour));
        EXPECT_EQ(colour.spare, 0.0);
    }
    return words;
}

// The library's palette, compared with the reference's.
Words check(const Words &words, int size) {
    const test::SampledFrame sampled(words);
    const Words got = packed(paletteOf(sampled.frame(), sampled.table(), sampled.count(), size));
    EXPECT_EQ(got, packed(reference::paletteOf(words, size)));
    return got;
}

TEST(Palette, BlackAlone) {
    EXPECT_EQ(check(Words(test::wholeTable, 0), 8), Words{0});
}

TEST(Palette, TheMoreFrequentFirst) {
    Words words;
    add(words, 3300, 0xff0000);
    add(words, 3100, 0x0000ff);
    const Words redFirst = check(words, 8);
    ASSERT_EQ(redFirst.size(), 2u);
    EXPECT_EQ(redFirst[0], 0xff0000u);
    EXPECT_NE(redFirst[1], 0x0000ffu); // the hue of its bucket, not its own
    EXPECT_EQ(redFirst[1], reference::packed(reference::rgbOf({53, 100, 50}, 80)));
    words.clear();
    add(words, 3100, 0xff0000);
    add(words, 3300, 0x0000ff);
    EXPECT_EQ(check(words, 8), (Words{redFirst[1], redFirst[0]}));
}

TEST(Palette, OfEqualsTheLowerHueFirst) {
    Words words;
    add(words, 2133, 0x0000ff);
    add(words, 2133, 0x00ff00);
    add(words, 2133, 0xff0000);
    add(words, 1, 0x0000ff); // the last sample is left out
    const Words palette = check(words, 8);
    ASSERT_EQ(palette.size(), 3u);
    EXPECT_EQ(palette[0], 0xff0000u);
    EXPECT_EQ(palette[1] & 0x00ff00u, 0x00ff00u);
}

TEST(Palette, TheLastSampleIsLeftOut) {
    Words words(test::wholeTable, 0);
    words.back() = 0x00ff00;
    EXPECT_EQ(check(words, 8), Words{0});
    std::swap(words.back(), words.front());
    EXPECT_EQ(check(words, 8).size(), 2u);
}

TEST(Palette, OneBucketAveragesSaturationAndLightness) {
    Words words;
    add(words, 3000, 0); // black and grey lie in the bucket of red
    add(words, 2000, 0xffffff);
    add(words, 1400, 0xff0000);
    EXPECT_EQ(check(words, 8).size(), 1u);
}

TEST(Palette, OfNoSize) {
    EXPECT_TRUE(check(Words(test::wholeTable, 0xff00ff), 0).empty());
}

TEST(Palette, OfANegativeSize) {
    const test::SampledFrame sampled(Words(test::wholeTable, 0));
    for (const int size : {-1, -8, std::numeric_limits<int>::min()})
        EXPECT_THROW(paletteOf(sampled.frame(), sampled.table(), sampled.count(), size),
                     std::length_error);
}

// All eighty hues, each a different number of times.
TEST(Palette, EveryHueAndNoMore) {
    Words words;
    for (int bucket = 0; bucket < 80; ++bucket) {
        std::uint32_t word = 0;
        for (int h = 0; h < 360; ++h) {
            word = reference::packed(reference::rgbOf({h, 100, 50}, 360));
            const HSL hsl = reference::hslOf(reference::unpacked(word));
            if (static_cast<int>(static_cast<float>(hsl.h) * 80.0f / 360.0f) == bucket)
                break;
        }
        add(words, 1 + (bucket * 37) % 80, word);
    }
    add(words, test::wholeTable - static_cast<int>(words.size()), 0);
    for (const int size : {1, 8, 79, 80, 81, 200, 5000}) {
        const Words palette = check(words, size);
        EXPECT_EQ(palette.size(), static_cast<std::size_t>(std::min(size, 80)));
    }
}

TEST(Palette, RandomFrames) {
    std::mt19937 random(30);
    for (int round = 0; round < 200; ++round) {
        Words colours(1 + random() % 60);
        for (std::uint32_t &colour : colours)
            colour =
                static_cast<std::uint32_t>(random()) & (random() % 2 == 0 ? 0xffffff : 0x3f1f2f);
        Words words(test::wholeTable);
        for (std::uint32_t &word : words)
            word = colours[random() % colours.size()];
        const int sizes[] = {0, 1, 2, 8, 8, 8, 30, 80, 100};
        check(words, sizes[random() % std::size(sizes)]);
        ASSERT_FALSE(testing::Test::HasFailure()) << round;
    }
}

TEST(Palette, Noise) {
    std::mt19937 random(31);
    for (int round = 0; round < 40; ++round) {
        Words words(test::wholeTable);
        for (std::uint32_t &word : words)
            word = static_cast<std::uint32_t>(random()) & 0xffffff;
        check(words, 80);
        ASSERT_FALSE(testing::Test::HasFailure()) << round;
    }
}

} // namespace
