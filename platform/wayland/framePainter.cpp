#include "platform/wayland/framePainter.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <sys/mman.h>

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

// Zero bytes whose pages are already there, few large ones where available. Throws std::bad_alloc.
std::shared_ptr<std::uint8_t> allocate(std::size_t bytes) {
    void *memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        throw std::bad_alloc();
    std::shared_ptr<std::uint8_t> owner(static_cast<std::uint8_t *>(memory),
                                        [bytes](std::uint8_t *pixels) { munmap(pixels, bytes); });
    madvise(memory, bytes, MADV_HUGEPAGE);
    madvise(memory, bytes, MADV_POPULATE_WRITE);
    return owner;
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
      frame(allocate(frameBytes(width, height))) {}

void FramePainter::aimAt(const Aim &aim) {
    if (format != nullptr && aim == aimed)
        return;
    copies = {};
    waiting.reset();
    paths = {};
    format = nullptr;
    const PixelFormat &pixels = *PixelFormat::of(aim.layout.format);
    plain = pixels.isBgrx() && aim.transform == WL_OUTPUT_TRANSFORM_NORMAL &&
            aim.layout.width == width && aim.layout.height == height;
    if (!plain)
        paths = PixelPaths(aim, pixels.bytes, width, height);
    aimed = aim;
    format = &pixels;
}

wl_buffer *FramePainter::target() {
    writing = waiting == std::size_t{0} ? 1 : 0;
    std::unique_ptr<PixelMemory> &memory = copies[writing];
    if (!memory)
        memory = std::make_unique<PixelMemory>(compositor, aimed.layout.bytes());
    return memory->bufferFor(aimed.layout);
}

void FramePainter::keep(bool isUpsideDown) {
    waiting = writing;
    if (isUpsideDown)
        turnRowsOver(copies[writing]->data(), aimed.layout);
}

bool FramePainter::paint() {
    const std::uint8_t *source = copies[*waiting]->data();
    waiting.reset();
    return plain ? copyRows(source) : convert(source);
}

bool FramePainter::copyRows(const std::uint8_t *source) {
    const std::size_t bytes = frameBytes(width, 1);
    std::uint8_t *target = frame.get();
    bool changed = false;
    for (int row = 0; row < height; ++row) {
        if (std::memcmp(target, source, bytes) != 0) {
            std::memcpy(target, source, bytes);
            changed = true;
        }
        source += aimed.layout.rowBytes;
        target += bytes;
    }
    return changed;
}

bool FramePainter::convert(const std::uint8_t *source) {
    std::uint8_t *target = frame.get();
    bool changed = false;
    for (const std::size_t row : paths.rows)
        for (const std::size_t column : paths.columns) {
            std::uint8_t pixel[frameBytesPerPixel];
            format->convert(source + row + column, pixel);
            changed = changed || std::memcmp(target, pixel, sizeof pixel) != 0;
            std::memcpy(target, pixel, sizeof pixel);
            target += frameBytesPerPixel;
        }
    return changed;
}

} // namespace platform::wayland
