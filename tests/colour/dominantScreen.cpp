#include "tests/colour/dominantScreen.h"
#include "tests/colour/reference.h"

#include <stdexcept>

namespace test {

namespace {

constexpr int margin = 10;
constexpr int points = 80; // per column and per row

void add(Pixels &words, int count, std::uint32_t colour) {
    words.insert(words.end(), static_cast<std::size_t>(count), colour);
}

constexpr std::uint32_t brightest = 255;

// The number of pixels of each bright hue, and the last sample, which is in no histogram.
struct Mixture {
    int common = 0; // of yellow, cyan and magenta, each
    int own[3] = {};
    std::uint32_t last[3] = {};

    // Black is heaviest without being overwhelming, nine dark hues fill most of the rest, and a few
    // bright pixels, none of their hues heavy enough to be a substitute, raise the average.
    Pixels words() const {
        Pixels all;
        for (const std::uint32_t hue : {0x010100u, 0x000101u, 0x010001u, 0x020100u, 0x020001u,
                                        0x010200u, 0x000201u, 0x010002u, 0x000102u})
            add(all, 250, hue);
        for (const std::uint32_t hue : {0xffff00u, 0x00ffffu, 0xff00ffu})
            add(all, common, hue);
        add(all, own[0], brightest << 16);
        for (const int half : {0, 1}) { // the second half lies in the next hue
            add(all, (own[1] + half) / 2, brightest << 8 | (half ? 5u : 0u));
            add(all, (own[2] + half) / 2, brightest | (half ? 5u << 16 : 0u));
        }
        add(all, points * points - 1 - static_cast<int>(all.size()), 0);
        all.push_back(last[0] << 16 | last[1] << 8 | last[2]);
        return all;
    }
};

// Adds bright pixels until the channel sums average to `channels`.
Mixture mixtureFor(const std::uint8_t (&channels)[3], int common) {
    Mixture mixture;
    mixture.common = common;
    const Pixels base = mixture.words();
    for (int c = 0; c < 3; ++c) {
        std::int64_t missing = channels[c] * channels[c] * std::int64_t{points} * points;
        for (const std::uint32_t word : base) {
            const std::int64_t value = word >> (16 - 8 * c) & 0xff;
            missing -= value * value;
        }
        while (missing > brightest * brightest) {
            ++mixture.own[c];
            missing -= brightest * brightest;
        }
        while (mixture.last[c] * mixture.last[c] < missing)
            ++mixture.last[c];
    }
    return mixture;
}

} // namespace

Pixels screenSampledAs(const std::vector<std::uint32_t> &words) {
    Pixels screen(screenSide * screenSide, 0);
    for (int i = 0; i < points * points; ++i)
        screen[static_cast<std::size_t>((margin + i % points) * screenSide + margin + i / points)] =
            words.at(static_cast<std::size_t>(i));
    return screen;
}

std::vector<std::uint32_t> samplesOf(const Pixels &screen) {
    std::vector<std::uint32_t> words;
    for (int column = margin; column < screenSide - margin; ++column)
        for (int row = margin; row < screenSide - margin; ++row)
            words.push_back(screen.at(static_cast<std::size_t>(row * screenSide + column)));
    return words;
}

Pixels plainScreen(std::uint32_t colour) {
    return Pixels(screenSide * screenSide, colour);
}

Pixels averagingTo(RGB wanted) {
    for (int common = 0; common < 16; ++common) {
        const Pixels words = mixtureFor({wanted.r, wanted.g, wanted.b}, common).words();
        const reference::Dominant dominant = reference::dominantOf(words);
        if (dominant.rule == reference::Rule::Average &&
            reference::packed(dominant.colour) == reference::packed(wanted))
            return screenSampledAs(words);
    }
    throw std::logic_error("no screen averages to this colour");
}

} // namespace test
