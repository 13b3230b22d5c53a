#include "colour/conversion.h"

#include <algorithm>
#include <cstring>

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
// two parts gives for each of the 256 channels what a division does, in a fraction of its time.
static constexpr float fraction(int channel) {
    const float c = static_cast<float>(channel);
    return c * 0x1.01p-8f + c * 0x1.010102p-24f;
}

// In whole degrees, without a branch, so that the compiler can convert several colours at once.
static inline std::int32_t hue(int red, int green, int blue) {
    const float r = fraction(red);
    const float g = fraction(green);
    const float b = fraction(blue);
    const float max = greatest(r, g, b);
    const float spread = max - least(r, g, b);
    // Of a grey the difference is 0 as well; any divisor but 0 will do, and this is less than the
    // spread of any other colour.
    const float divisor = spread > 1.0f / 1024.0f ? spread : 1.0f / 1024.0f;
    const float difference = r == max ? g - b : g == max ? b - r : r - g;
    const float turn = r == max ? 0.0f : g == max ? 120.0f : 240.0f;
    const auto degrees = static_cast<std::int32_t>(difference * 60.0f / divisor + turn);
    return degrees < 0 ? degrees + 360 : degrees; // at most 300 before
}

static constexpr std::int32_t lightness(float min, float max) {
    return static_cast<std::int32_t>(50.0f * (min + max));
}

static constexpr std::int32_t saturation(float min, float max) {
    // The lightness is asked after its truncation: a colour may differ from grey and still be so
    // dark that it counts as unsaturated.
    const std::int32_t l = lightness(min, max);
    if (l == 0 || min == max)
        return 0;
    const float d = (max - min) * 100.0f;
    if (l > 49)
        return static_cast<std::int32_t>(
            static_cast<double>(d) / (2.0 - static_cast<double>(max) - static_cast<double>(min)));
    return static_cast<std::int32_t>(d / (min + max));
}

// Of all channels up to `high` with themselves, and of `low` with `high`.
static constexpr std::uint32_t pairNumber(std::uint32_t low, std::uint32_t high) {
    return high * (high + 1) / 2 + low;
}

static constexpr int bias(int s, int l) {
    return std::clamp(l / 3, 1, 10) + (l < 11 ? 0 : std::min(s / 4, 10));
}

int hslBias(HSL hsl) {
    return bias(hsl.s, hsl.l);
}

namespace {
struct ShadeTable {
    Shade shades[256 * 257 / 2] = {};

    constexpr ShadeTable() {
        for (unsigned high = 0; high < 256; ++high) {
            for (unsigned low = 0; low <= high; ++low) {
                const float min = fraction(static_cast<int>(low));
                const float max = fraction(static_cast<int>(high));
                const int s = saturation(min, max);
                const int l = lightness(min, max);
                shades[pairNumber(low, high)] = {1, static_cast<std::uint8_t>(s),
                                                 static_cast<std::uint8_t>(l),
                                                 static_cast<std::uint8_t>(bias(s, l))};
            }
        }
    }
};
} // namespace

static constexpr ShadeTable shadeTable;
const Shade *const HSLColumns::shades = shadeTable.shades;

HSL RGBToHSL(RGB rgb) {
    const float min = fraction(std::min({rgb.r, rgb.g, rgb.b}));
    const float max = fraction(std::max({rgb.r, rgb.g, rgb.b}));
    return {hue(rgb.r, rgb.g, rgb.b), saturation(min, max), lightness(min, max)};
}

// pairNumber() of the least and the greatest channel of four pixels at once.
static inline void pairNumbers(const std::uint32_t *words, std::uint32_t *numbers) {
    using Words = std::uint32_t __attribute__((vector_size(16)));
    using Halves = std::uint16_t __attribute__((vector_size(16)));
    using Bytes = std::uint8_t __attribute__((vector_size(16)));
    Words pixels;
    std::memcpy(&pixels, words, sizeof pixels);
    const Bytes blue = Bytes(pixels);
    const Bytes green = Bytes(pixels >> 8);
    const Bytes red = Bytes(pixels >> 16);
    const Bytes least = __builtin_elementwise_min(__builtin_elementwise_min(red, green), blue);
    const Bytes greatest = __builtin_elementwise_max(__builtin_elementwise_max(red, green), blue);
    const Words low = Words(least) & 0xff;
    const Halves high = Halves(Words(greatest) & 0xff);
    const Words result = Words(high * (high + 1) >> 1) + low; // 255 * 256 fits the half
    std::memcpy(numbers, &result, sizeof result);
}

void wordsToHSL(const std::uint32_t (&words)[HSLColumns::capacity], HSLColumns &out) {
    for (int i = 0; i < HSLColumns::capacity; ++i) {
        const std::uint32_t word = words[i];
        out.hue[i] = hue(word >> 16 & 0xff, word >> 8 & 0xff, word & 0xff);
    }
    for (int i = 0; i < HSLColumns::capacity; i += 4)
        pairNumbers(words + i, out.channelPair + i);
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

// A channel of 0 to 1 as a byte: truncated, and only the low 8 bits kept. What no integer can
// hold, which only absurd saturations and lightnesses lead to, gives 0.
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
