#include "colour/dominantColour.h"
#include "tests/colour/reference.h"
#include "tests/colour/sampledFrame.h"

#include <gtest/gtest.h>
#include <map>

using reference::Dominant;
using reference::packed;
using reference::Rule;
using test::add;

namespace {

using Words = std::vector<std::uint32_t>;

// Blues of bucket 213 with a saturation of 100.
constexpr std::uint32_t darkBlue = 0x000016;    // lightness 4, weight 1
constexpr std::uint32_t brightBlue = 0x0000ff;  // lightness 50, weight 20
constexpr std::uint32_t dimBlue = 0x00001a;     // lightness 5, weight 1
constexpr std::uint32_t darkGreen = 0x001600;   // bucket 106, lightness 4, weight 1
constexpr std::uint32_t brightGreen = 0x00ff00; // weight 20
constexpr std::uint32_t darkRed = 0x160000;     // bucket 0, lightness 4, weight 1
constexpr std::uint32_t brightRed = 0xff0000;   // weight 20

// Compares the library's result with the reference's and returns the latter.
Dominant check(const Words &words) {
    const test::SampledFrame sampled(words);
    const Dominant wanted = reference::dominantOf(words);
    testing::internal::CaptureStdout();
    const RGB got = dominantColour(sampled.frame(), sampled.table(), sampled.count());
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              wanted.rule == Rule::Average ? "Resorting to averaging\n" : "");
    EXPECT_EQ(packed(got), packed(wanted.colour));
    EXPECT_EQ(got.spare, 0.0);
    return wanted;
}

// Fills the table up with dark pixels of many hues, each hue with a weight of at most `limit`.
// Leaves out the buckets of pure red, green and blue.
void fillUp(Words &words, int limit = 300) {
    std::map<int, std::uint32_t> hues;
    for (std::uint32_t high = 1; high < 13; ++high)
        for (std::uint32_t low = 1; low < high; ++low)
            for (const std::uint32_t word :
                 {high << 16 | low << 8, high << 8 | low, high << 16 | low}) {
                const HSL hsl = reference::hslOf(reference::unpacked(word));
                hues.emplace(static_cast<int>(static_cast<float>(hsl.h) * 320.0f / 360.0f), word);
            }
    for (const int taken : {0, 106, 213})
        hues.erase(taken);
    for (const auto &[bucket, word] : hues)
        add(words, std::min(limit, test::wholeTable - static_cast<int>(words.size())), word);
    ASSERT_EQ(words.size(), static_cast<std::size_t>(test::wholeTable));
}

TEST(Dominant, BlackIsBlackWithoutAveraging) {
    const Words words(test::wholeTable, 0);
    EXPECT_EQ(check(words).rule, Rule::Heavy);
    EXPECT_EQ(packed(check(words).colour), 0u);
}

TEST(Dominant, ColourOutweighsBlack) {
    Words words;
    add(words, 400, brightBlue);
    add(words, 6000, 0);
    const Dominant blue = check(words);
    EXPECT_EQ(packed(blue.colour), 0x0001ffu); // the hue of its bucket, not its own
    EXPECT_EQ(blue.leaders[0].weight, 8000);
    EXPECT_EQ(blue.chosen.h, 213);
}

TEST(Dominant, OneColourEverywhere) {
    for (std::uint32_t word = 0; word < 0x1000000; word += 49999)
        check(Words(test::wholeTable, word));
}

TEST(Dominant, TheLastSampleIsLeftOut) {
    Words words;
    add(words, 320, brightBlue); // 6400
    add(words, 6079, 0);         // 6079
    add(words, 1, 0);
    EXPECT_EQ(packed(check(words).colour), 0x0001ffu);
    // The last sample's weight would decide.
    words.clear();
    add(words, 100, brightBlue);
    add(words, 100, brightRed);
    fillUp(words);
    words.back() = brightRed;
    EXPECT_EQ(check(words).leaders[0].bucket, 213);
    std::swap(words[3000], words.back());
    EXPECT_EQ(check(words).leaders[0].bucket, 0);
}

// 4479 is not overwhelming yet, 4480 is.
TEST(Dominant, DarknessIsForgivenFromAWeightOf4480) {
    for (const int weight : {4478, 4479, 4480, 4481}) {
        Words words;
        add(words, weight, darkBlue);
        add(words, 40, brightGreen);
        fillUp(words);
        const Dominant dominant = check(words);
        EXPECT_EQ(dominant.leaders[0].weight, weight);
        EXPECT_EQ(dominant.rule, weight > 4479 ? Rule::Heavy : Rule::Second) << weight;
    }
}

TEST(Dominant, ALightnessOfFiveIsBrightEnough) {
    Words words;
    add(words, 3000, dimBlue);
    add(words, 40, brightGreen);
    fillUp(words);
    EXPECT_EQ(check(words).rule, Rule::Bright);
    words[17] = darkBlue; // the average falls to four and a fraction
    EXPECT_EQ(check(words).rule, Rule::Second);
}

// A substitute needs a weight of 320: sixteen pixels of 20.
TEST(Dominant, ASubstituteWeighsAtLeast320) {
    for (const std::uint32_t last : {0xff0000u, 0x9c3030u, 0x500000u}) {
        Words words;
        add(words, 2000, darkBlue);
        add(words, 15, brightRed);
        words.push_back(last);
        fillUp(words);
        const Dominant dominant = check(words);
        const int weight = 300 + reference::weightOf(reference::hslOf(reference::unpacked(last)));
        EXPECT_EQ(dominant.leaders[1].weight, weight);
        EXPECT_EQ(dominant.rule, weight >= 320 ? Rule::Second : Rule::Average) << weight;
    }
    // The fillers are also below 320, by one.
    Words words;
    add(words, 2000, darkBlue);
    fillUp(words, 319);
    EXPECT_EQ(check(words).leaders[1].weight, 319);
    EXPECT_EQ(check(words).rule, Rule::Average);
    // At 320, a dark filler is no substitute, but it prevents averaging.
    words.clear();
    add(words, 2000, darkBlue);
    fillUp(words, 320);
    EXPECT_EQ(check(words).leaders[1].weight, 320);
    EXPECT_EQ(check(words).rule, Rule::DarkSubstitute);
}

TEST(Dominant, AveragesWhenNothingWeighsEnough) {
    Words words;
    add(words, 1000, 0);
    add(words, 14, brightGreen);
    fillUp(words);
    EXPECT_EQ(check(words).rule, Rule::Average);
    // The last sample counts in the average.
    const std::uint32_t without = packed(check(words).colour);
    words.back() = 0xffffff;
    EXPECT_EQ(check(words).rule, Rule::Average);
    EXPECT_NE(packed(check(words).colour), without);
}

TEST(Dominant, ADarkSubstituteEndsTheSearch) {
    Words words;
    add(words, 3000, darkBlue);
    add(words, 1000, darkGreen);
    add(words, 45, brightRed); // 900: qualifies, but in the third slot
    fillUp(words);
    const Dominant dominant = check(words);
    EXPECT_EQ(dominant.leaders[1].bucket, 106);
    EXPECT_EQ(dominant.leaders[2].bucket, 0);
    EXPECT_EQ(dominant.leaders[2].weight, 900);
    EXPECT_EQ(dominant.rule, Rule::DarkSubstitute);
    EXPECT_EQ(dominant.chosen.h, 213);
}

TEST(Dominant, TheSubstitutesLightnessBorder) {
    for (const std::uint32_t second : {0x001600u, 0x001a00u}) {
        Words words;
        add(words, 3000, darkBlue);
        add(words, 1000, second);
        fillUp(words);
        EXPECT_EQ(check(words).rule, second == 0x1a00 ? Rule::Second : Rule::DarkSubstitute);
    }
}

// A leader that is overtaken does not move to the next slot: slot 1 keeps an earlier weight of its
// bucket, even when that bucket is now in slot 0, and the averages are divided by that weight.
TEST(Dominant, ALeaderMayBeItsOwnSubstitute) {
    Words words;
    add(words, 400, darkBlue);
    add(words, 3000, darkGreen);
    fillUp(words);
    const Dominant dominant = check(words);
    EXPECT_EQ(dominant.leaders[0].bucket, 106);
    EXPECT_EQ(dominant.leaders[1].bucket, 106);
    EXPECT_EQ(dominant.leaders[1].weight, 400);
    EXPECT_EQ(dominant.rule, Rule::Second);
    EXPECT_EQ(dominant.chosen.s, 100 * 3000 / 400); // far beyond 100
    EXPECT_EQ(dominant.chosen.l, 4 * 3000 / 400);
}

TEST(Dominant, AnOvertakenLeaderIsForgotten) {
    Words words;
    add(words, 100, brightRed); // 2000
    add(words, 150, darkRed);   // drags the average down a little
    add(words, 3000, darkBlue); // slot 1 up to 2150, then slot 0
    fillUp(words);
    const Dominant dominant = check(words);
    EXPECT_EQ(dominant.leaders[0].bucket, 213);
    EXPECT_EQ(dominant.leaders[1].bucket, 213); // red was never moved down
    EXPECT_EQ(dominant.rule, Rule::Second);
}

TEST(Dominant, OfEqualsTheFirstToGetThere) {
    for (const bool redFirst : {true, false}) {
        Words words;
        add(words, 50, brightGreen);
        add(words, 100, redFirst ? brightRed : brightBlue);
        add(words, 100, redFirst ? brightBlue : brightRed);
        fillUp(words);
        EXPECT_EQ(check(words).leaders[0].bucket, redFirst ? 0 : 213);
        // In alternation, the first one reaches each weight first.
        for (std::size_t i = 0; i < 200; ++i)
            words[50 + i] = (i % 2 == 0) == redFirst ? brightRed : brightBlue;
        EXPECT_EQ(check(words).leaders[0].bucket, redFirst ? 0 : 213);
    }
}

// Slot 0 ends with the greatest total, whatever the order.
TEST(Dominant, TheHeaviestLeadsInAnyOrder) {
    std::mt19937 random(4);
    Words words;
    add(words, 41, brightRed);
    add(words, 40, brightGreen);
    add(words, 39, brightBlue);
    fillUp(words);
    for (int round = 0; round < 50; ++round) {
        std::shuffle(words.begin(), words.end() - 1, random);
        EXPECT_EQ(check(words).leaders[0].bucket, 0);
    }
}

// Few colours in runs, most of them dark: in such frames leaders change places.
TEST(Dominant, RandomFrames) {
    std::mt19937 random(20);
    std::map<Rule, int> seen;
    for (int round = 0; round < 500; ++round) {
        const bool darkAndMany = round % 5 == 0;
        Words colours(1 + random() % (darkAndMany ? 200 : round % 3 == 0 ? 40 : 6));
        for (std::uint32_t &colour : colours) {
            const auto kind = darkAndMany ? 8 : static_cast<std::uint32_t>(random() % 8);
            const std::uint32_t word = static_cast<std::uint32_t>(random());
            colour = kind == 0 ? word & 0xffffff : kind < 3 ? word & 0x1f1f1f : word & 0x0f0f0f;
        }
        Words words;
        const unsigned longest = darkAndMany || round % 2 == 0 ? 1 : 1500;
        while (words.size() < test::wholeTable)
            add(words,
                std::min<int>(1 + static_cast<int>(random() % longest),
                              test::wholeTable - static_cast<int>(words.size())),
                colours[random() % colours.size()]);
        ++seen[check(words).rule];
        ASSERT_FALSE(testing::Test::HasFailure()) << round;
    }
    for (const Rule rule :
         {Rule::Heavy, Rule::Bright, Rule::Second, Rule::DarkSubstitute, Rule::Average})
        EXPECT_GT(seen[rule], 5) << static_cast<int>(rule);
    // Slot 2 never outweighs slot 1, so it is never the substitute.
    EXPECT_EQ(seen[Rule::Third], 0);
}

TEST(Dominant, Noise) {
    std::mt19937 random(21);
    for (int round = 0; round < 60; ++round) {
        const std::uint32_t mask = round % 4 == 0 ? 0xffffff : static_cast<std::uint32_t>(random());
        Words words(test::wholeTable);
        for (std::uint32_t &word : words)
            word = static_cast<std::uint32_t>(random()) & mask & 0xffffff;
        check(words);
        ASSERT_FALSE(testing::Test::HasFailure()) << round;
    }
}

} // namespace
