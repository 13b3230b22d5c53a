#include "colour/conversion.h"
#include "colour/bias.h"
#include "colour/processor.h"

#include <algorithm>

static constexpr float least(float a, float b, float c) {
    const float m = b < a ? b : a;
    return c < m ? c : m;
}
static constexpr float greatest(float a, float b, float c) {
    const float m = b > a ? b : a;
    return c > m ? c : m;
}

float Min(float a, float b, float c) {
    return least(a, b, c);
}
float Max(float a, float b, float c) {
    return greatest(a, b, c);
}

// channel / 255, rounded to single precision: 1 / 255 is 0x1.010101...p-8, and multiplying by it in
// two parts gives the same result as a division for each of the 256 values, in a fraction of the
// time.
static constexpr float fraction(int channel) {
    const float c = static_cast<float>(channel);
    return c * 0x1.01p-8f + c * 0x1.010102p-24f;
}

namespace {
// The channels of one colour as fractions, with their minimum and maximum.
struct Channels {
    Channels(std::uint32_t red, std::uint32_t green, std::uint32_t blue)
        : r(fraction(static_cast<int>(red))), g(fraction(static_cast<int>(green))),
          b(fraction(static_cast<int>(blue))), min(least(r, g, b)), max(greatest(r, g, b)) {}
    float r, g, b, min, max;
};
} // namespace

// In whole degrees. Has no branches, so that the compiler can convert several colours at once.
static inline std::int32_t hue(const Channels &c) {
    const float spread = c.max - c.min;
    // For a grey the difference is 0, too, so any divisor other than 0 will do; this one is less
    // than the spread of any other colour.
    const float divisor = spread > 1.0f / 1024.0f ? spread : 1.0f / 1024.0f;
    const float difference = c.r == c.max ? c.g - c.b : c.g == c.max ? c.b - c.r : c.r - c.g;
    const float turn = c.r == c.max ? 0.0f : c.g == c.max ? 120.0f : 240.0f;
    const auto degrees = static_cast<std::int32_t>(difference * 60.0f / divisor + turn);
    return degrees < 0 ? degrees + 360 : degrees; // at most 300 before the wrap
}

static constexpr std::int32_t lightness(float min, float max) {
    return static_cast<std::int32_t>(50.0f * (min + max));
}

static constexpr std::int32_t saturation(float min, float max) {
    // Tests the truncated lightness: a colour may differ from grey and still be so dark that it
    // counts as unsaturated.
    const std::int32_t l = lightness(min, max);
    if (l == 0 || min == max)
        return 0;
    const float d = (max - min) * 100.0f;
    if (l > 49)
        return static_cast<std::int32_t>(
            static_cast<double>(d) / (2.0 - static_cast<double>(max) - static_cast<double>(min)));
    return static_cast<std::int32_t>(d / (min + max));
}

// Index of a pair with `low` <= `high` when all such pairs are ordered by `high`, then by `low`.
static constexpr std::uint32_t pairNumber(std::uint32_t low, std::uint32_t high) {
    return high * (high + 1) / 2 + low;
}

int hslBias(HSL hsl) {
    return bias(hsl.s, hsl.l);
}

namespace {
// Saturations by pairNumber(), since a look-up is faster than a division. One byte each, to keep
// the table (32 KiB) about as small as a first-level cache.
struct SaturationTable {
    std::uint8_t percent[256 * 257 / 2] = {};

    constexpr SaturationTable() {
        for (unsigned high = 0; high < 256; ++high)
            for (unsigned low = 0; low <= high; ++low)
                percent[pairNumber(low, high)] = static_cast<std::uint8_t>(
                    saturation(fraction(static_cast<int>(low)), fraction(static_cast<int>(high))));
    }
};
} // namespace

static constexpr SaturationTable saturationTable;

HSL RGBToHSL(RGB rgb) {
    const Channels channels(rgb.r, rgb.g, rgb.b);
    return {hue(channels), saturation(channels.min, channels.max),
            lightness(channels.min, channels.max)};
}

// Plain loops that the compiler vectorises. Always inlined, so that the caller's target attribute
// decides which instructions may be used.
__attribute__((always_inline)) static inline void
convert(const std::uint32_t (&__restrict words)[HSLColumns::capacity], HSLColumns &__restrict out) {
    std::uint16_t pairs[HSLColumns::capacity];
    for (int i = 0; i < HSLColumns::capacity; ++i) {
        const std::uint32_t word = words[i];
        const auto red = static_cast<std::uint8_t>(word >> 16);
        const auto green = static_cast<std::uint8_t>(word >> 8);
        const auto blue = static_cast<std::uint8_t>(word);
        const std::uint16_t low = std::min({red, green, blue});
        const std::uint16_t high = std::max({red, green, blue});
        pairs[i] = static_cast<std::uint16_t>(pairNumber(low, high));
    }
    for (int i = 0; i < HSLColumns::capacity; ++i) {
        const std::uint32_t word = words[i];
        const Channels channels(word >> 16 & 0xff, word >> 8 & 0xff, word & 0xff);
        out.hue[i] = static_cast<std::uint16_t>(hue(channels));
        out.lightness[i] = static_cast<std::uint16_t>(lightness(channels.min, channels.max));
    }
    for (int i = 0; i < HSLColumns::capacity; ++i)
        out.saturation[i] = saturationTable.percent[pairs[i]];
}

static void convertAnywhere(const std::uint32_t (&words)[HSLColumns::capacity], HSLColumns &out) {
    convert(words, out);
}

#ifdef __x86_64__
__attribute__((target("avx2"))) static void
convertWide(const std::uint32_t (&words)[HSLColumns::capacity], HSLColumns &out) {
    convert(words, out);
}

static constexpr WordsToHSL ways[] = {convertAnywhere, convertWide};
static const std::size_t knownWays = hasAVX2() ? 2 : 1; // checked once, when the library is loaded
#else
static constexpr WordsToHSL ways[] = {convertAnywhere};
static constexpr std::size_t knownWays = 1;
#endif

std::span<const WordsToHSL> conversions() {
    return std::span(ways).first(knownWays);
}

float HueToRGB(float p, float q, float t) {
    if (t < 0.0f)
        t += 1.0f;
    if (t > 1.0f)
        t -= 1.0f;
    if (6.0f * t < 1.0f)
        return ((q - p) * 6.0f) * t + p;
    if (2.0f * t < 1.0f)
        return q;
    if (3.0f * t < 2.0f)
        return p + (q - p) * (0.6666667f - t) * 6.0f;
    return p;
}

// A channel of 0 to 1 as a byte: truncated, and only the low 8 bits kept. A value outside the
// 32-bit range, which only absurd saturations and lightnesses produce, gives 0.
static std::uint8_t toByte(float channel) {
    const float scaled = channel * 255.0f;
    if (!(scaled > -2147483648.0f && scaled < 2147483648.0f))
        return 0;
    return static_cast<std::uint8_t>(static_cast<std::int32_t>(scaled));
}

RGB HSLToRGB(HSL hsl, int hueScale) {
    if (hsl.s == 0) {
        const std::uint8_t grey = toByte(static_cast<float>(hsl.l) / 100.0f);
        return {grey, grey, grey};
    }
    const float saturation = static_cast<float>(hsl.s) / 100.0f;
    const float lightness = static_cast<float>(hsl.l) / 100.0f;
    const float hue = static_cast<float>(hsl.h) / static_cast<float>(hueScale);
    const float q = lightness < 0.5f ? (saturation + 1.0f) * lightness
                                     : lightness + saturation - saturation * lightness;
    const float p = 2.0f * lightness - q;
    const float third = 0.33333334f;
    return {toByte(HueToRGB(p, q, hue + third)), toByte(HueToRGB(p, q, hue)),
            toByte(HueToRGB(p, q, hue - third))};
}
