// HueToRGB over a fine grid and at the borders of its branches, to the last bit.
#include "colour/conversion.h"
#include "tests/colour/transcription.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace {

std::uint32_t bits(float value) {
    return std::bit_cast<std::uint32_t>(value);
}

// Each place where a test of the rules flips, and its neighbours on both sides.
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
    for (const float tiny : {-0.0f, std::numeric_limits<float>::denorm_min(), -1e-9f, 1e-9f})
        all.push_back(tiny);
    return all;
}

void expectSame(float p, float q, float t) {
    ASSERT_EQ(bits(HueToRGB(p, q, t)), bits(transcription::channelOf(p, q, t)))
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

// Far outside one turn only one turn is taken back.
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

} // namespace
