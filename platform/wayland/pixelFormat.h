// The formats of pixels in shared memory that can be converted to BGRA.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace platform::wayland {

// A pixel is a little-endian number of `bytes` bytes. In it, each channel begins at its bit `shift`
// and has `bits` bits.
struct PixelFormat {
    struct Channel {
        int shift = 0;
        int bits = 0;
    };

    std::uint32_t code = 0; // a wl_shm_format
    std::size_t bytes = 0;
    std::array<Channel, 3> channels{}; // blue, green, red

    // Null when pixels of this format cannot be converted.
    static const PixelFormat *of(std::uint32_t code);

    // Whether the bytes are B, G, R and an unused fourth, so that they need no conversion.
    bool isBgrx() const {
        return bytes == 4 && channels[0].shift == 0 && channels[1].shift == 8 &&
               channels[2].shift == 16;
    }

    // Converts the pixel at `source` into the four bytes B, G, R, 255.
    void convert(const std::uint8_t *source, std::uint8_t *bgra) const {
        std::uint32_t pixel = 0;
        for (std::size_t i = 0; i < bytes; ++i)
            pixel |= std::uint32_t{source[i]} << 8 * i;
        for (std::size_t c = 0; c < channels.size(); ++c) {
            const std::uint32_t largest = (1u << channels[c].bits) - 1;
            const std::uint32_t value = pixel >> channels[c].shift & largest;
            bgra[c] = static_cast<std::uint8_t>((value * 255 + largest / 2) / largest);
        }
        bgra[3] = 255;
    }
};

} // namespace platform::wayland
