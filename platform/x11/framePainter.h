// Keeps a frame, tightly packed BGRA of a fixed size, equal to what a monitor shows.
//
// When the monitor has the frame's size and lies within the root window, the server writes straight
// into the frame. Otherwise its pixels are read aside and then converted, scaled to the frame (the
// nearest pixel) and completed with black where the monitor reaches beyond the root window.
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

    // Hands the frame's memory over; nothing is painted any more.
    std::shared_ptr<const std::uint8_t> takePixels() { return frame.take(); }

    // Sets what to show: a monitor's area, in a root window of this area. The frame is as before
    // until the next paint() of everything.
    void aimAt(const Rect &monitor, const Rect &root);

    // The part of the monitor that can be read.
    const Rect &visibleArea() const { return visible; }

    // Brings those rows of the frame up to date that show something of `damage`.
    ReadOutcome paint(const Rect &damage);

    // Brings the whole frame up to date.
    ReadOutcome paintAll();

    // The server writes straight into the frame, with nothing to be copied by us.
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
    std::vector<std::ptrdiff_t> columns; // for each of the frame's: where its pixel is in a row
                                         // that was read, or -1 for black
};

} // namespace platform::x11
