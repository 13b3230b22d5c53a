// Turns what the compositor copies into a frame: tightly packed BGRA of a fixed size, upright.
//
// The compositor writes into separate memory, so that a request may wait there for the next change
// while the frame is being read. Where its pixels already are such a frame, rows that differ are
// copied; otherwise all pixels are turned, converted and scaled (nearest pixel).
#pragma once

#include "platform/wayland/pixelFormat.h"
#include "platform/wayland/pixelMemory.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
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

    // Sets how the next copies are to be understood; one that waits is discarded if that changes.
    // Throws std::bad_alloc.
    void aimAt(const Aim &aim);
    const Aim &aim() const { return aimed; }

    // Where the compositor is to write the next copy: not where a finished one waits. Null when
    // there is no memory for it. Throws std::bad_alloc.
    wl_buffer *target();

    // A copy is finished, and waits to be painted; its first row may be the lowest one.
    void keep(bool isUpsideDown);
    bool hasCopy() const { return waiting.has_value(); }
    void discard() { waiting.reset(); }

    // Updates the frame from the copy that waits. False when the frame has not changed.
    bool paint();

private:
    bool copyRows(const std::uint8_t *source);
    bool convert(const std::uint8_t *source);

    const Compositor &compositor;
    const int width;
    const int height;
    const std::shared_ptr<std::uint8_t> frame;

    Aim aimed;
    const PixelFormat *format = nullptr; // of the aim; null before the first one
    // What the compositor writes; the second one exists once it has been needed.
    std::array<std::unique_ptr<PixelMemory>, 2> copies;
    std::size_t writing = 0;            // the one that it writes next, or now
    std::optional<std::size_t> waiting; // the one that holds a finished copy
    bool plain = false;                 // the rows that are copied are rows of the frame
    PixelPaths paths;                   // from the frame into a copy, unless it is plain
};

} // namespace platform::wayland
