// How the server's screen stores a pixel, and its conversion to BGRA.
#pragma once

#include "platform/x11/connection.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace platform::x11 {

// The root window's visual, and how pixmaps of a depth are stored; null when the server has none.
const xcb_visualtype_t *rootVisual(const xcb_screen_t &screen);
const xcb_format_t *formatOfDepth(const xcb_setup_t *setup, std::uint8_t depth);

class PixelFormat {
public:
    // The format of the root window. Nothing when its pixels are not red, green and blue values of
    // 16 or 32 bits (palettes, for example).
    static std::optional<PixelFormat> of(const Connection &connection);

    // Whether the bytes are B, G, R and an unused fourth, so that they need no conversion.
    bool isBgrx() const { return bgrx; }

    // Bytes of one row of `width` pixels as the server sends it.
    std::size_t rowBytes(int width) const;
    std::size_t pixelBytes() const { return bytes; }

    // Converts the pixel at `source` into the four bytes B, G, R, 255.
    void convert(const std::uint8_t *source, std::uint8_t *bgra) const {
        std::uint32_t pixel = 0;
        for (std::size_t i = 0; i < bytes; ++i)
            pixel |= static_cast<std::uint32_t>(source[i]) << byteShifts[i];
        for (std::size_t c = 0; c < 3; ++c)
            bgra[c] = channels[c].values[(pixel & channels[c].mask) >> channels[c].shift];
        bgra[3] = 255;
    }

private:
    struct Channel {
        std::uint32_t mask = 0;
        int shift = 0;
        std::vector<std::uint8_t> values; // the 8-bit equivalent of each channel value
    };

    static std::optional<Channel> channelOf(std::uint32_t mask);

    std::size_t bytes = 0;
    std::size_t rowPadding = 0;
    std::array<int, 4> byteShifts{};
    std::array<Channel, 3> channels; // blue, green, red
    bool bgrx = false;
};

} // namespace platform::x11
