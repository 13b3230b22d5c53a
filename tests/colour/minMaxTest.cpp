// Min and Max to the last bit, where it tells which of the equal arguments came back.
#include "colour/conversion.h"
#include "tests/colour/transcription.h"

#include <bit>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>

namespace {

using Limits = std::numeric_limits<float>;

const float values[] = {0.0f,
                        -0.0f,
                        1.0f,
                        -1.0f,
                        0.5f,
                        Limits::denorm_min(),
                        Limits::max(),
                        Limits::lowest(),
                        Limits::infinity(),
                        -Limits::infinity(),
                        Limits::quiet_NaN(),
                        -Limits::quiet_NaN()};

std::uint32_t bits(float value) {
    return std::bit_cast<std::uint32_t>(value);
}

TEST(MinMax, EveryTriple) {
    for (const float a : values)
        for (const float b : values)
            for (const float c : values) {
                EXPECT_EQ(bits(Min(a, b, c)), bits(transcription::least(a, b, c)))
                    << a << " " << b << " " << c;
                EXPECT_EQ(bits(Max(a, b, c)), bits(transcription::greatest(a, b, c)))
                    << a << " " << b << " " << c;
            }
}

TEST(MinMax, OfEqualsTheEarlierOneStays) {
    EXPECT_EQ(bits(Min(0.0f, -0.0f, -0.0f)), bits(0.0f));
    EXPECT_EQ(bits(Min(-0.0f, 0.0f, 0.0f)), bits(-0.0f));
    EXPECT_EQ(bits(Max(0.0f, -0.0f, -0.0f)), bits(0.0f));
    EXPECT_EQ(bits(Max(-0.0f, 0.0f, 0.0f)), bits(-0.0f));
    EXPECT_EQ(bits(Min(1.0f, -0.0f, 0.0f)), bits(-0.0f));
    EXPECT_EQ(bits(Max(-1.0f, -0.0f, 0.0f)), bits(-0.0f));
}

// Nothing is smaller or larger than not-a-number, so it stays when it comes first and is passed
// over when it comes later.
TEST(MinMax, NotANumber) {
    const float nan = Limits::quiet_NaN();
    EXPECT_EQ(bits(Min(nan, 1.0f, 2.0f)), bits(nan));
    EXPECT_EQ(bits(Max(nan, 1.0f, 2.0f)), bits(nan));
    EXPECT_EQ(Min(2.0f, nan, 1.0f), 1.0f);
    EXPECT_EQ(Max(1.0f, 2.0f, nan), 2.0f);
}

} // namespace
