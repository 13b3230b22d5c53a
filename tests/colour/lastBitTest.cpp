// HueToRGB, Min and Max to the last bit.
#include "colour/conversion.h"
#include "tests/colour/reference.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace {

using Limits = std::numeric_limits<float>;

std::uint32_t bits(float value) {
    return std::bit_cast<std::uint32_t>(value);
}

// Each threshold of the rules, and the floats next to it on both sides.
std::vector<float> borders() {
    std::vector<float> all;
    for (const float turn : {-1.0f, 0.0f, 1.0f})
        for (const float border : {0.0f, 1.0f / 6, 1.0f / 3, 0.5f, 2.0f / 3, 5.0f / 6, 1.0f}) {
            float below = border + turn;
            float above = below;
            all.push_back(below);
            for (int i = 0; i < 8; ++i) {
                all.push_back(below = std::nextafter(below, -10.0f));
                all.push_back(above = std::nextafter(above, 10.0f));
            }
        }
    for (const float tiny : {-0.0f, Limits::denorm_min(), -1e-9f, 1e-9f})
        all.push_back(tiny);
    return all;
}

void expectSame(float p, float q, float t) {
    ASSERT_EQ(bits(HueToRGB(p, q, t)), bits(reference::channelOf(p, q, t)))
        << "p " << p << " q " << q << " t " << t;
}

TEST(HueToRgb, FineGrid) {
    for (int pi = -4; pi <= 24; ++pi)
        for (int qi = -4; qi <= 24; ++qi)
            for (int ti = -2000; ti <= 2000; ++ti)
                expectSame(static_cast<float>(pi) / 20, static_cast<float>(qi) / 20,
                           static_cast<float>(ti) / 999);
}

TEST(HueToRgb, BordersOfItsBranches) {
    for (const float t : borders())
        for (int pi = 0; pi <= 50; ++pi)
            for (int qi = 0; qi <= 50; ++qi)
                expectSame(static_cast<float>(pi) / 50, static_cast<float>(qi) / 50, t);
}

// Far outside the range, only one turn is added or subtracted.
TEST(HueToRgb, FarOutside) {
    for (const float t : {-7.5f, -2.0f, -1.25f, 2.0f, 2.2f, 9.75f})
        for (const float p : {0.0f, 0.2f, 0.9f})
            for (const float q : {0.1f, 0.5f, 1.0f})
                expectSame(p, q, t);
}

TEST(HueToRgb, OneValueOfEachBranch) {
    EXPECT_EQ(HueToRGB(0.0f, 1.0f, 0.0f), 0.0f);
    EXPECT_EQ(HueToRGB(0.25f, 0.75f, 0.25f), 0.75f);
    EXPECT_EQ(HueToRGB(0.25f, 0.75f, 0.75f), 0.25f);
    EXPECT_EQ(HueToRGB(0.25f, 0.75f, -0.25f), 0.25f);
    EXPECT_EQ(HueToRGB(0.25f, 0.75f, 1.25f), 0.75f);
    EXPECT_EQ(HueToRGB(0.0f, 1.0f, 0.5f), (0.6666667f - 0.5f) * 6.0f);
}

// Equal values such as 0 and -0 differ in their bits, which shows the argument that was returned.
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

TEST(MinMax, EveryTriple) {
    for (const float a : values)
        for (const float b : values)
            for (const float c : values) {
                EXPECT_EQ(bits(Min(a, b, c)), bits(reference::least(a, b, c)))
                    << a << " " << b << " " << c;
                EXPECT_EQ(bits(Max(a, b, c)), bits(reference::greatest(a, b, c)))
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

// No value compares smaller or larger than a NaN, so a NaN is returned when it comes first and
// ignored when it comes later.
TEST(MinMax, NotANumber) {
    const float nan = Limits::quiet_NaN();
    EXPECT_EQ(bits(Min(nan, 1.0f, 2.0f)), bits(nan));
    EXPECT_EQ(bits(Max(nan, 1.0f, 2.0f)), bits(nan));
    EXPECT_EQ(Min(2.0f, nan, 1.0f), 1.0f);
    EXPECT_EQ(Max(1.0f, 2.0f, nan), 2.0f);
}

} // namespace
