// A frame of the screen as the colour functions read it.
#pragma once

#include "colour/colour.h"

#include <cstdint>
#include <cstring>

// A view of packed 32-bit pixels, four bytes each in the order blue, green, red, alpha. It owns
// nothing. The bytes may be rewritten by another thread while they are read: a colour then mixes
// two consecutive frames, which is accepted.
struct Frame {
    const unsigned char *bytes = nullptr; // null: a frame of any size that is all black
    std::uint64_t pixelCount = 0;

    // The pixel word at `index`: red in bits 16 to 23, green 8 to 15, blue 0 to 7. An index
    // outside the frame reads as black, so a sample table that was made for another screen size,
    // or that extends beyond the edge, never causes a read of other memory.
    std::uint32_t word(std::int32_t index) const {
        if (bytes == nullptr ||
            static_cast<std::uint64_t>(static_cast<std::int64_t>(index)) >= pixelCount)
            return 0;
        return wordOnFrame(index);
    }

    // Whether there are bytes and all of `count` indices are on the frame.
    bool holds(const std::int32_t *indices, int count) const;

    // word() of an index that is known to be on the frame.
    std::uint32_t wordOnFrame(std::int32_t index) const {
        std::uint32_t pixel;
        std::memcpy(&pixel, bytes + static_cast<std::uint32_t>(index) * std::uint64_t{4},
                    sizeof pixel);
        return pixel;
    }

    // Prefetches the pixel at `index` for a later word(). Any index is allowed.
    void fetch(std::int32_t index) const {
        // Not pointer arithmetic: the index may lie outside the frame.
        // NOLINTNEXTLINE(performance-no-int-to-ptr)
        __builtin_prefetch(reinterpret_cast<const void *>(reinterpret_cast<std::intptr_t>(bytes) +
                                                          std::intptr_t{index} * 4));
    }

    // The colour of the pixel at `index`, as word() reads it.
    RGB colour(std::int32_t index) const {
        const std::uint32_t pixel = word(index);
        return {static_cast<std::uint8_t>(pixel >> 16), static_cast<std::uint8_t>(pixel >> 8),
                static_cast<std::uint8_t>(pixel)};
    }
};

// The root mean square of the pixels at `count` indices, channel by channel: the mean of the
// squares in unsigned 32-bit division, then the square root in double precision, truncated.
// Bright pixels weigh more than in a plain mean. A count below 1 gives black.
RGB rootMeanSquare(const Frame &frame, const std::int32_t *indices, int count);

// The same for indices that the frame is known to hold, without bounds checks, in two thirds of the
// time.
RGB rootMeanSquareOnFrame(const Frame &frame, const std::int32_t *indices, int count);
