#include "colour/conversion.h"

float Min(float a, float b, float c) {
    const float m = b < a ? b : a;
    return c < m ? c : m;
}

float Max(float a, float b, float c) {
    const float m = b > a ? b : a;
    return c > m ? c : m;
}

// channel / 255, rounded to single precision: 1 / 255 is 0x1.010101...p-8, and multiplying by it in
// two parts gives for each of the 256 channels what a division does, in a fraction of its time.
static inline float fraction(int channel) {
    const float c = static_cast<float>(channel);
    return c * 0x1.01p-8f + c * 0x1.010102p-24f;
}

// The rules without a branch, so that the compiler can convert several colours at once.
static inline HSL convert(int red, int green, int blue) {
    // A divisor of 0, whose numerator is 0 too or whose quotient is not used, becomes this; it is
    // less than any other divisor.
    constexpr float least = 1.0f / 1024.0f;
    const float r = fraction(red);
    const float g = fraction(green);
    const float b = fraction(blue);
    const float min = Min(r, g, b);
    const float max = Max(r, g, b);
    const float sum = min + max;
    const float spread = max - min;

    HSL hsl;
    hsl.l = static_cast<std::int32_t>(50.0f * sum);

    // The lightness is asked after its truncation: a colour may differ from grey and still be so
    // dark that it counts as unsaturated.
    const float d = spread * 100.0f;
    const double room = 2.0 - static_cast<double>(max) - static_cast<double>(min);
    const auto bright =
        static_cast<std::int32_t>(static_cast<double>(d) / (room > least ? room : double{least}));
    const auto dark = static_cast<std::int32_t>(d / (sum > least ? sum : least));
    hsl.s = hsl.l > 49 ? bright : hsl.l == 0 ? 0 : dark;

    const float difference = r == max ? g - b : g == max ? b - r : r - g;
    const float turn = r == max ? 0.0f : g == max ? 120.0f : 240.0f;
    const auto degrees =
        static_cast<std::int32_t>(difference * 60.0f / (spread > least ? spread : least) + turn);
    hsl.h = degrees < 0 ? degrees + 360 : degrees; // at most 300 before
    return hsl;
}

HSL RGBToHSL(RGB rgb) {
    return convert(rgb.r, rgb.g, rgb.b);
}

void wordsToHSL(const std::uint32_t *words, int count, HSLColumns &out) {
    for (int i = 0; i < count; ++i) {
        const std::uint32_t word = words[i];
        const HSL hsl = convert(word >> 16 & 0xff, word >> 8 & 0xff, word & 0xff);
        out.h[i] = hsl.h;
        out.s[i] = hsl.s;
        out.l[i] = hsl.l;
    }
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
