// Colours that tell which of a long row of drawings a panel shows, and so put datagrams in order.
//
// Neighbouring steps differ by one in one channel. The steps go round the edges of the colour cube,
// black, red, yellow, white, cyan, blue and back. A panel that was read while the frame was being
// replaced mixes two steps; each channel of such a mixture lies between theirs, so it is the colour
// of a step between the two, or of none at all: never that of an earlier or a later one.
//
// Pure functions, callable from any thread.
#pragma once

#include <cstdint>
#include <optional>

namespace load {

inline constexpr int stepsRound = 6 * 255;

// 0xRRGGBB; steps that are a whole round apart have the same colour.
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

// From 0 to stepsRound; nothing for a colour that no step has.
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

// The step at this place of the round that follows on `last`, or `last` itself; nothing when the
// place lies behind it. Less than half a round may have been left out.
constexpr std::optional<std::int64_t> stepAfter(std::int64_t last, int place) {
    const int onward = (place - static_cast<int>(last % stepsRound) + stepsRound) % stepsRound;
    if (onward >= stepsRound / 2)
        return std::nullopt;
    return last + onward;
}

} // namespace load
