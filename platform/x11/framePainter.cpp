#include "platform/x11/framePainter.h"

#include <cstring>
#include <utility>

namespace platform::x11 {

namespace {

constexpr std::size_t frameBytesPerPixel = 4;

std::size_t frameBytes(int width, int height) {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * frameBytesPerPixel;
}

// The position, of `from`, that is nearest to position `index` of `to`.
int nearest(int index, int from, int to) {
    return static_cast<int>(static_cast<std::int64_t>(index) * from / to);
}

} // namespace

FramePainter::FramePainter(Connection &connection, PixelFormat format_, int width, int height,
                           PixelMemory::Sharing sharing)
    : connection(connection), format(std::move(format_)), width(width), height(height),
      sharing(sharing), frame(connection, frameBytes(width, height), sharing) {}

void FramePainter::aimAt(const Rect &monitor, const Rect &root) {
    aim = monitor;
    visible = intersect(monitor, root);
    direct = format.isBgrx() && visible == aim && aim.width == width && aim.height == height;
    aside.reset();
    columns.clear();
    if (direct)
        return;

    if (!visible.empty())
        aside = std::make_unique<PixelMemory>(
            connection, format.rowBytes(visible.width) * static_cast<std::size_t>(visible.height),
            sharing);
    for (int x = 0; x < width; ++x) {
        const int column = aim.x + nearest(x, aim.width, width) - visible.x;
        const bool shown = column >= 0 && column < visible.width;
        columns.push_back(shown ? column * static_cast<std::ptrdiff_t>(format.pixelBytes()) : -1);
    }
}

ReadOutcome FramePainter::paint(const Rect &damage) {
    const Rect hit = intersect(damage, visible);
    if (hit.empty())
        return ReadOutcome::Done;
    return paintBand({visible.x, hit.y, visible.width, hit.height}, false);
}

ReadOutcome FramePainter::paintAll() {
    return paintBand(visible, true);
}

ReadOutcome FramePainter::paintBand(const Rect &band, bool wholeFrame) {
    // Only full-width bands can be read in place: the server packs rows at the requested width.
    if (direct)
        return frame.read(band, format, frameBytes(width, band.y - aim.y));
    if (aside) {
        const auto row = static_cast<std::size_t>(band.y - visible.y);
        const ReadOutcome outcome = aside->read(band, format, row * format.rowBytes(visible.width));
        if (outcome != ReadOutcome::Done)
            return outcome;
    }
    compose(band, wholeFrame);
    return ReadOutcome::Done;
}

void FramePainter::compose(const Rect &band, bool wholeFrame) {
    for (int y = 0; y < height; ++y) {
        const int row = aim.y + nearest(y, aim.height, height);
        std::uint8_t *target = frame.data() + frameBytes(width, y);
        if (!band.empty() && row >= band.y && row < band.y + band.height)
            composeRow(aside->data() + static_cast<std::size_t>(row - visible.y) *
                                           format.rowBytes(visible.width),
                       target);
        else if (wholeFrame)
            composeRow(nullptr, target);
    }
}

void FramePainter::composeRow(const std::uint8_t *source, std::uint8_t *target) const {
    static constexpr std::uint8_t black[frameBytesPerPixel] = {0, 0, 0, 255};
    for (const std::ptrdiff_t column : columns) {
        if (source == nullptr || column < 0)
            std::memcpy(target, black, sizeof black);
        else
            format.convert(source + column, target);
        target += frameBytesPerPixel;
    }
}

} // namespace platform::x11
