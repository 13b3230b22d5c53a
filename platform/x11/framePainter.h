// Keeps a frame, tightly packed BGRA of a fixed size, equal to what a monitor shows.
//
// When the monitor has the frame's size and lies within the root window, the server writes straight
// into the frame. Otherwise its pixels are read into separate memory, then converted and scaled to
// the frame (nearest pixel); parts of the monitor beyond the root window are black.
#pragma once

#include "platform/x11/pixelMemory.h"

#include <memory>
#include <vector>

namespace platform::x11 {

class FramePainter {
public:
    // Throws std::bad_alloc. `connection` outlives this object.
    FramePainter(Connection &connection, PixelFormat format, int width, int height,
                 PixelMemory::Sharing sharing);

    // The frame's first byte, the same for the painter's whole life.
    std::uint8_t *pixels() const { return frame.data(); }

    // Hands the frame's memory over; do not paint afterwards.
    std::shared_ptr<const std::uint8_t> takePixels() { return frame.take(); }

    // Sets the monitor's and the root window's areas. The frame does not change until the next
    // paintAll(), which must come before any paint().
    void aimAt(const Rect &monitor, const Rect &root);

    // The part of the monitor that can be read.
    const Rect &visibleArea() const { return visible; }

    // Updates the rows of the frame that show a part of `damage`.
    ReadOutcome paint(const Rect &damage);

    // Updates the whole frame.
    ReadOutcome paintAll();

    // Whether the server writes straight into the frame, with no copy on our side.
    bool isDirect() const { return direct && frame.isShared(); }

private:
    ReadOutcome paintBand(const Rect &band, bool wholeFrame);
    void compose(const Rect &band, bool wholeFrame);
    void composeRow(const std::uint8_t *source, std::uint8_t *target) const;

    Connection &connection;
    PixelFormat format;
    int width;
    int height;
    PixelMemory::Sharing sharing;
    PixelMemory frame;

    Rect aim;
    Rect visible;
    bool direct = false;
    std::unique_ptr<PixelMemory> aside;
    std::vector<std::ptrdiff_t> columns; // for each column of the frame: its pixel's offset in a
                                         // row that was read, or -1 for black
};

} // namespace platform::x11
