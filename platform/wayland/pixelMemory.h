// Memory for pixels into which the compositor writes.
//
// It is passed as a descriptor that no other process can open, and whose size is sealed.
#pragma once

#include "platform/wayland/compositor.h"
#include "platform/wayland/proxy.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace platform::wayland {

// How the pixels of one picture lie in memory.
struct PixelLayout {
    std::uint32_t format = 0; // a wl_shm_format
    int width = 0;
    int height = 0;
    std::size_t rowBytes = 0;

    std::size_t bytes() const { return rowBytes * static_cast<std::size_t>(height); }
    bool operator==(const PixelLayout &) const = default;
};

class PixelMemory {
public:
    // `bytes` zero bytes whose pages are already allocated. Throws std::bad_alloc. The compositor
    // outlives this object.
    PixelMemory(const Compositor &compositor, std::size_t bytes);
    ~PixelMemory();
    PixelMemory(const PixelMemory &) = delete;
    PixelMemory &operator=(const PixelMemory &) = delete;

    std::uint8_t *data() const { return static_cast<std::uint8_t *>(base); }

    // What the compositor needs to write a picture of this layout to the beginning of the memory,
    // which is large enough for it. Valid until the next call; null when there is no memory for it.
    wl_buffer *bufferFor(const PixelLayout &layout);

private:
    const std::size_t size;
    void *base = nullptr;
    Proxy<wl_shm_pool> pool;
    Proxy<wl_buffer> buffer;
    PixelLayout bufferLayout;
};

} // namespace platform::wayland
