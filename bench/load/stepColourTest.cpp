#include "bench/load/stepColour.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <set>

using namespace load;

namespace {

int channel(std::uint32_t colour, int shift) {
    return static_cast<int>(colour >> shift & 0xff);
}

std::optional<int> placeOf(std::uint32_t colour) {
    return load::placeOf(channel(colour, 16), channel(colour, 8), channel(colour, 0));
}

// The colour of a panel of which `share` per cent of the samples already show the later colour.
std::uint32_t mixture(std::uint32_t earlier, std::uint32_t later, int share) {
    std::uint32_t mixed = 0;
    for (const int shift : {16, 8, 0}) {
        const int a = channel(earlier, shift);
        const int b = channel(later, shift);
        const int mean = (a * a * (100 - share) + b * b * share) / 100;
        mixed |= static_cast<std::uint32_t>(std::sqrt(static_cast<double>(mean))) << shift;
    }
    return mixed;
}

} // namespace

TEST(LoadStepColour, EachStepOfARoundHasItsOwn) {
    std::set<std::uint32_t> seen;
    for (int step = 0; step < stepsRound; ++step) {
        EXPECT_EQ(placeOf(colourOf(step)), step);
        EXPECT_TRUE(seen.insert(colourOf(step)).second) << step;
        EXPECT_EQ(colourOf(step + stepsRound), colourOf(step));
    }
}

TEST(LoadStepColour, OthersHaveNone) {
    EXPECT_EQ(placeOf(0x010100u), std::nullopt);
    EXPECT_EQ(placeOf(0xfefe00u), std::nullopt);
    EXPECT_EQ(placeOf(0x808080u), std::nullopt);
}

TEST(LoadStepColour, StepsGoOnRoundAfterRoundButNeverBack) {
    EXPECT_EQ(stepAfter(0, 0), 0);
    EXPECT_EQ(stepAfter(0, 7), 7);
    EXPECT_EQ(stepAfter(7, 6), std::nullopt);
    EXPECT_EQ(stepAfter(stepsRound - 1, 3), stepsRound + 3);
    EXPECT_EQ(stepAfter(stepsRound + 3, stepsRound - 1), std::nullopt);
}

TEST(LoadStepColour, AMixtureIsNeverEarlierNorLater) {
    for (int first = 0; first < stepsRound; ++first)
        for (const int onward : {1, 2, 3, 20, 40})
            for (int share = 0; share <= 100; ++share) {
                const auto place =
                    placeOf(mixture(colourOf(first), colourOf(first + onward), share));
                if (!place)
                    continue;
                const auto step = stepAfter(first, *place);
                ASSERT_TRUE(step) << first << " " << onward << " " << share;
                ASSERT_LE(*step, first + onward) << first << " " << share;
            }
}
