#include "platform/wayland/framePainter.h"

#include <algorithm>

namespace platform::wayland {

namespace {

constexpr std::size_t frameBytesPerPixel = 4;

std::size_t frameBytes(int width, int height) {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * frameBytesPerPixel;
}

// The position, of `from`, that is nearest to position `index` of `to`.
int nearest(int index, int from, int to) {
    return static_cast<int>(static_cast<std::int64_t>(index) * from / to);
}

// Whether the upright picture's columns run against the pixels that were copied, and its rows.
struct Flips {
    bool columns;
    bool rows;
};

Flips flipsOf(std::int32_t transform) {
    switch (transform) {
    case WL_OUTPUT_TRANSFORM_90:
    case WL_OUTPUT_TRANSFORM_FLIPPED:
        return {true, false};
    case WL_OUTPUT_TRANSFORM_180:
    case WL_OUTPUT_TRANSFORM_FLIPPED_270:
        return {true, true};
    case WL_OUTPUT_TRANSFORM_270:
    case WL_OUTPUT_TRANSFORM_FLIPPED_180:
        return {false, true};
    default:
        return {false, false};
    }
}

// For each of `frameLength` positions, `step` bytes times its position among `length` pixels, and
// `base` bytes.
std::vector<std::size_t> pathsOf(int frameLength, int length, bool flipped, std::size_t step) {
    std::vector<std::size_t> paths;
    paths.reserve(static_cast<std::size_t>(frameLength));
    for (int i = 0; i < frameLength; ++i) {
        const int at = nearest(i, length, frameLength);
        paths.push_back(static_cast<std::size_t>(flipped ? length - 1 - at : at) * step);
    }
    return paths;
}

void turnRowsOver(std::uint8_t *pixels, const PixelLayout &layout) {
    std::uint8_t *low = pixels + layout.bytes();
    for (std::uint8_t *high = pixels; high + layout.rowBytes < low; high += layout.rowBytes) {
        low -= layout.rowBytes;
        std::swap_ranges(high, high + layout.rowBytes, low);
    }
}

} // namespace

PixelPaths::PixelPaths(const Aim &aim, std::size_t pixelBytes, int frameWidth, int frameHeight) {
    const std::size_t rowBytes = aim.layout.rowBytes;
    const Flips flips = flipsOf(aim.transform);
    columns = pathsOf(frameWidth, aim.uprightWidth(), flips.columns,
                      aim.isSideways() ? rowBytes : pixelBytes);
    rows = pathsOf(frameHeight, aim.uprightHeight(), flips.rows,
                   aim.isSideways() ? pixelBytes : rowBytes);
}

FramePainter::FramePainter(const Compositor &compositor, int width, int height)
    : compositor(compositor), width(width), height(height),
      frame(compositor, frameBytes(width, height)) {}

void FramePainter::aimAt(const Aim &aim) {
    if (format != nullptr && aim == aimed)
        return;
    const PixelFormat &pixels = *PixelFormat::of(aim.layout.format);
    const bool direct = pixels.isBgrx() && aim.transform == WL_OUTPUT_TRANSFORM_NORMAL &&
                        aim.layout.width == width && aim.layout.height == height &&
                        aim.layout.rowBytes == frameBytes(width, 1);
    aside.reset();
    paths = {};
    format = nullptr;
    if (!direct) {
        aside = std::make_unique<PixelMemory>(compositor, aim.layout.bytes());
        paths = PixelPaths(aim, pixels.bytes, width, height);
    }
    aimed = aim;
    format = &pixels;
}

wl_buffer *FramePainter::target() {
    return (aside ? *aside : frame).bufferFor(aimed.layout);
}

void FramePainter::paint(bool isUpsideDown) {
    if (isUpsideDown)
        turnRowsOver((aside ? *aside : frame).data(), aimed.layout);
    if (!aside)
        return;
    std::uint8_t *pixel = frame.data();
    for (const std::size_t row : paths.rows)
        for (const std::size_t column : paths.columns) {
            format->convert(aside->data() + row + column, pixel);
            pixel += frameBytesPerPixel;
        }
}

} // namespace platform::wayland
