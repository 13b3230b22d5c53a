#include "colour/conversion.h"

float Min(float a, float b, float c) {
    const float m = b < a ? b : a;
    return c < m ? c : m;
}

float Max(float a, float b, float c) {
    const float m = b > a ? b : a;
    return c > m ? c : m;
}

HSL RGBToHSL(RGB rgb) {
    const float r = static_cast<float>(rgb.r / 255.0);
    const float g = static_cast<float>(rgb.g / 255.0);
    const float b = static_cast<float>(rgb.b / 255.0);
    const float min = Min(r, g, b);
    const float max = Max(r, g, b);
    const float sum = min + max;

    HSL hsl;
    hsl.l = static_cast<std::int32_t>(50.0f * sum);
    if (min == max)
        return hsl;

    // The lightness is asked after its truncation: a colour may differ from grey and still be so
    // dark that it counts as unsaturated.
    const float spread = max - min;
    if (hsl.l > 49) {
        const float d = spread * 100.0f;
        hsl.s = static_cast<std::int32_t>(
            static_cast<double>(d) / (2.0 - static_cast<double>(max) - static_cast<double>(min)));
    } else if (hsl.l != 0) {
        hsl.s = static_cast<std::int32_t>(spread * 100.0f / sum);
    }

    if (r == max)
        hsl.h = static_cast<std::int32_t>((g - b) * 60.0f / spread);
    else if (g == max)
        hsl.h = static_cast<std::int32_t>((b - r) * 60.0f / spread + 120.0f);
    else
        hsl.h = static_cast<std::int32_t>((r - g) * 60.0f / spread + 240.0f);
    if (hsl.h < 0)
        hsl.h += 360;
    else if (hsl.h > 360) // exactly 360 stays
        hsl.h -= 360;
    return hsl;
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
