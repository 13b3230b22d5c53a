#include "tests/colour/reference.h"

#include <cmath>
#include <cstdlib>
#include <stdexcept>

namespace reference {

float least(float a, float b, float c) {
    const float m = (b < a) ? b : a;
    return (c < m) ? c : m;
}

float greatest(float a, float b, float c) {
    const float m = (b > a) ? b : a;
    return (c > m) ? c : m;
}

HSL hslOf(RGB rgb) {
    const float r = static_cast<float>(static_cast<double>(rgb.r) / 255.0);
    const float g = static_cast<float>(static_cast<double>(rgb.g) / 255.0);
    const float b = static_cast<float>(static_cast<double>(rgb.b) / 255.0);
    const float min = least(r, g, b);
    const float max = greatest(r, g, b);
    const float sum = min + max;
    const float lightness = 50.0f * sum;
    const int l = static_cast<int>(lightness);
    if (min == max)
        return {0, 0, l};

    int s = 0;
    if (l != 0) {
        const float range = max - min;
        const float d = range * 100.0f;
        if (l > 49) {
            const double dd = d;
            const double dmax = max;
            const double dmin = min;
            s = static_cast<int>(dd / (2.0 - dmax - dmin));
        } else {
            const float quotient = d / sum;
            s = static_cast<int>(quotient);
        }
    }

    float hue;
    const float range = max - min;
    if (r == max) {
        const float scaled = (g - b) * 60.0f;
        hue = scaled / range;
    } else if (g == max) {
        const float scaled = (b - r) * 60.0f;
        const float turned = scaled / range;
        hue = turned + 120.0f;
    } else {
        const float scaled = (r - g) * 60.0f;
        const float turned = scaled / range;
        hue = turned + 240.0f;
    }
    int h = static_cast<int>(hue);
    if (h < 0)
        h += 360;
    else if (h > 360)
        h -= 360;
    return {h, s, l};
}

float channelOf(float p, float q, float t) {
    if (t < 0.0f)
        t = t + 1.0f;
    if (t > 1.0f)
        t = t - 1.0f;
    const float sixth = 6.0f * t;
    const float half = 2.0f * t;
    const float third = 3.0f * t;
    if (sixth < 1.0f) {
        const float slope = (q - p) * 6.0f;
        const float rise = slope * t;
        return rise + p;
    }
    if (half < 1.0f)
        return q;
    if (third < 2.0f) {
        const float difference = q - p;
        const float left = 0.6666667f - t;
        const float product = difference * left;
        const float fall = product * 6.0f;
        return p + fall;
    }
    return p;
}

RGB rgbOf(HSL hsl, int scale) {
    if (hsl.s == 0) {
        const float fraction = static_cast<float>(hsl.l) / 100.0f;
        const float value = fraction * 255.0f;
        const auto v = static_cast<std::uint8_t>(static_cast<std::int32_t>(value) & 0xff);
        return {v, v, v};
    }
    const float S = static_cast<float>(hsl.s) / 100.0f;
    const float L = static_cast<float>(hsl.l) / 100.0f;
    const float H = static_cast<float>(hsl.h) / static_cast<float>(scale);
    float q;
    if (L < 0.5f) {
        const float more = S + 1.0f;
        q = more * L;
    } else {
        const float both = L + S;
        const float product = S * L;
        q = both - product;
    }
    const float twice = 2.0f * L;
    const float p = twice - q;
    const float channels[3] = {channelOf(p, q, H + 0.33333334f), channelOf(p, q, H),
                               channelOf(p, q, H - 0.33333334f)};
    std::uint8_t bytes[3];
    for (int i = 0; i < 3; ++i) {
        const float value = channels[i] * 255.0f;
        bytes[i] = static_cast<std::uint8_t>(static_cast<std::int32_t>(value) & 0xff);
    }
    return {bytes[0], bytes[1], bytes[2]};
}

int weightOf(HSL hsl) {
    int w = hsl.l / 3;
    if (w <= 0)
        w = 1;
    if (w >= 11)
        w = 10;
    if (hsl.l >= 11) {
        int more = hsl.s / 4;
        if (more >= 11)
            more = 10;
        w += more;
    }
    return w;
}

std::uint32_t packed(RGB rgb) {
    return static_cast<std::uint32_t>(rgb.r) << 16 | static_cast<std::uint32_t>(rgb.g) << 8 | rgb.b;
}

RGB unpacked(std::uint32_t word) {
    return {static_cast<std::uint8_t>(word >> 16 & 0xff),
            static_cast<std::uint8_t>(word >> 8 & 0xff), static_cast<std::uint8_t>(word & 0xff)};
}

RGB averageOf(const std::vector<std::uint32_t> &words) {
    std::uint32_t red = 0, green = 0, blue = 0;
    for (const std::uint32_t word : words) {
        const RGB colour = unpacked(word);
        red += static_cast<std::uint32_t>(colour.r) * colour.r;
        green += static_cast<std::uint32_t>(colour.g) * colour.g;
        blue += static_cast<std::uint32_t>(colour.b) * colour.b;
    }
    const auto count = static_cast<std::uint32_t>(words.size());
    const auto root = [&](std::uint32_t sum) {
        return static_cast<std::uint8_t>(
            static_cast<int>(std::sqrt(static_cast<double>(sum / count))));
    };
    return {root(red), root(green), root(blue)};
}

Dominant dominantOf(const std::vector<std::uint32_t> &words) {
    std::int32_t weightTotal[320] = {};
    std::int32_t saturationTotal[320] = {};
    std::int32_t lightnessTotal[320] = {};
    Dominant result;
    Leader *slot = result.leaders;
    for (std::size_t i = 0; i + 1 < words.size(); ++i) {
        const HSL hsl = hslOf(unpacked(words[i]));
        const float scaled = static_cast<float>(hsl.h) * 320.0f;
        const int bucket = static_cast<int>(scaled / 360.0f);
        const int w = weightOf(hsl);
        weightTotal[bucket] += w;
        saturationTotal[bucket] += hsl.s * w;
        lightnessTotal[bucket] += hsl.l * w;
        const int n = weightTotal[bucket];
        if (n > slot[0].weight)
            slot[0] = {n, bucket};
        else if (n > slot[1].weight)
            slot[1] = {n, bucket};
        else if (n > slot[2].weight)
            slot[2] = {n, bucket};
    }

    const int B = slot[0].bucket;
    const int W = slot[0].weight;
    const HSL heaviest{B, saturationTotal[B] / W, lightnessTotal[B] / W};
    if (W > 4479 || heaviest.l >= 5) {
        result.rule = W > 4479 ? Rule::Heavy : Rule::Bright;
        result.chosen = heaviest;
    } else if (slot[1].weight < 320 && slot[2].weight < 320) {
        result.rule = Rule::Average;
        result.colour = averageOf(words);
        return result;
    } else {
        const int which = slot[1].weight >= 320 ? 1 : 2;
        const int c = slot[which].bucket;
        const int n = slot[which].weight;
        const int l = lightnessTotal[c] / n;
        if (l < 5) {
            result.rule = Rule::DarkSubstitute;
            result.chosen = heaviest;
        } else {
            result.rule = which == 1 ? Rule::Second : Rule::Third;
            result.chosen = {c, saturationTotal[c] / n, l};
        }
    }
    result.colour = rgbOf(result.chosen, 320);
    return result;
}

std::vector<RGB> paletteOf(const std::vector<std::uint32_t> &words, int size) {
    if (size < 0)
        throw std::length_error("a palette of fewer than no colours");
    std::int32_t count[80] = {};
    std::int32_t saturation[80] = {};
    std::int32_t lightness[80] = {};
    for (std::size_t i = 0; i + 1 < words.size(); ++i) {
        const HSL hsl = hslOf(unpacked(words[i]));
        const float scaled = static_cast<float>(hsl.h) * 80.0f;
        const int bucket = static_cast<int>(scaled / 360.0f);
        count[bucket] += 1;
        saturation[bucket] += hsl.s;
        lightness[bucket] += hsl.l;
    }
    std::vector<int> pickedCount, pickedBucket;
    for (int k = 0; k < size; ++k) {
        int best = 0;
        for (int bucket = 0; bucket < 80; ++bucket)
            if (count[bucket] > count[best])
                best = bucket;
        pickedCount.push_back(count[best]);
        pickedBucket.push_back(best);
        count[best] = 0;
    }
    std::vector<RGB> palette;
    for (std::size_t k = 0; k < pickedCount.size(); ++k) {
        const int c = pickedCount[k];
        const int bucket = pickedBucket[k];
        if (c != 0)
            palette.push_back(rgbOf({bucket, saturation[bucket] / c, lightness[bucket] / c}, 80));
    }
    return palette;
}

std::string paletteText(const std::vector<RGB> &palette) {
    std::string text;
    for (const RGB &colour : palette)
        text += (text.empty() ? "" : ",") + (R"({"R":)" + std::to_string(colour.r)) + R"(,"G":)" +
                std::to_string(colour.g) + R"(,"B":)" + std::to_string(colour.b) + "}";
    return R"({"palette":[)" + text + "]}";
}

bool differs(RGB now, RGB last) {
    const int c[3] = {now.r, now.g, now.b};
    const int p[3] = {last.r, last.g, last.b};
    for (int i = 0; i < 3; ++i) {
        if (p[i] != 0 && c[i] == 0)
            return true;
        if (std::abs(c[i] - p[i]) > 4)
            return true;
    }
    return false;
}

} // namespace reference
