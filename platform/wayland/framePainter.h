// Turns what the compositor copies into a frame: tightly packed BGRA of a fixed size, upright.
//
// The compositor writes into separate memory, so that a request may wait there for the next change
// while the frame is being read. Where its pixels already are such a frame, rows that differ are
// copied; otherwise all pixels are turned, converted and scaled (nearest pixel).
#pragma once

#include "platform/wayland/pixelFormat.h"
#include "platform/wayland/pixelMemory.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace platform::wayland {

// How to get from the pixels that were copied to the upright picture.
struct Aim {
    PixelLayout layout;         // one that ScreenCopy has offered
    std::int32_t transform = 0; // the output's

    int uprightWidth() const { return isSideways() ? layout.height : layout.width; }
    int uprightHeight() const { return isSideways() ? layout.width : layout.height; }
    bool isSideways() const { return (transform & 1) != 0; }
    bool operator==(const Aim &) const = default;
};

// For each column and each row of a frame, the number of bytes that the way to its pixels adds: the
// pixel of column x and row y begins at columns[x] + rows[y]. Throws std::bad_alloc.
struct PixelPaths {
    std::vector<std::size_t> columns;
    std::vector<std::size_t> rows;

    PixelPaths() = default;
    PixelPaths(const Aim &aim, std::size_t pixelBytes, int frameWidth, int frameHeight);
};

class FramePainter {
public:
    // Throws std::bad_alloc. The compositor outlives this object.
    FramePainter(const Compositor &compositor, int width, int height);

    // The frame's first byte, the same for the painter's whole life.
    std::uint8_t *pixels() const { return frame.get(); }

    // The frame's memory, which may outlive the painter.
    std::shared_ptr<const std::uint8_t> sharedPixels() const { return frame; }

    // Sets how the next copies are to be understood. Throws std::bad_alloc.
    void aimAt(const Aim &aim);
    const Aim &aim() const { return aimed; }

    // Where the compositor is to write the next copy. Null when there is no memory for it.
    wl_buffer *target();

    // Updates the frame from a finished copy, whose first row may be the lowest one. False when the
    // frame has not changed.
    bool paint(bool isUpsideDown);

private:
    bool copyRows();
    bool convert();

    const Compositor &compositor;
    const int width;
    const int height;
    const std::shared_ptr<std::uint8_t> frame;

    Aim aimed;
    const PixelFormat *format = nullptr; // of the aim; null before the first one
    std::unique_ptr<PixelMemory> copied; // what the compositor writes
    bool plain = false;                  // the rows that are copied are rows of the frame
    PixelPaths paths;                    // from the frame into `copied`, unless it is plain
};

} // namespace platform::wayland
