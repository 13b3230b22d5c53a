// Colours that identify which of many drawings a panel shows, and so the order of datagrams.
//
// Neighbouring steps differ by one in one channel. The steps follow the edges of the colour cube:
// black, red, yellow, white, cyan, blue and back to black. A panel that was read while the frame
// was being replaced mixes two steps. Each channel of the mixture lies between those of the two
// steps, so the mixture is the colour of a step between them, or of no step: never of an earlier or
// later one.
//
// Pure functions, callable from any thread.
#pragma once

#include <cstdint>
#include <optional>

namespace load {

inline constexpr int stepsRound = 6 * 255;

// 0xRRGGBB; steps that are stepsRound apart have the same colour.
constexpr std::uint32_t colourOf(std::int64_t step) {
    const auto place = static_cast<std::uint32_t>(step % stepsRound);
    const std::uint32_t x = place % 255;
    switch (place / 255) {
    case 0:
        return x << 16;
    case 1:
        return 0xff0000 | x << 8;
    case 2:
        return 0xffff00 | x;
    case 3:
        return (255 - x) << 16 | 0xffff;
    case 4:
        return (255 - x) << 8 | 0xff;
    default:
        return 255 - x;
    }
}

// From 0 to stepsRound - 1; nullopt for a colour that no step has.
constexpr std::optional<int> placeOf(int red, int green, int blue) {
    if (green == 0 && blue == 0 && red < 255)
        return red;
    if (red == 255 && blue == 0 && green < 255)
        return 255 + green;
    if (red == 255 && green == 255 && blue < 255)
        return 2 * 255 + blue;
    if (green == 255 && blue == 255 && red > 0)
        return 4 * 255 - red;
    if (red == 0 && blue == 255 && green > 0)
        return 5 * 255 - green;
    if (red == 0 && green == 0 && blue > 0)
        return 6 * 255 - blue;
    return std::nullopt;
}

// The next step after `last` at this place of the round, or `last` itself; nullopt if the place is
// behind it. Correct if fewer than stepsRound / 2 steps were skipped.
constexpr std::optional<std::int64_t> stepAfter(std::int64_t last, int place) {
    const int onward = (place - static_cast<int>(last % stepsRound) + stepsRound) % stepsRound;
    if (onward >= stepsRound / 2)
        return std::nullopt;
    return last + onward;
}

} // namespace load
