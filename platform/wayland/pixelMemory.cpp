#include "platform/wayland/pixelMemory.h"

#include "platform/objects/pixelFile.h"

#include <new>
#include <sys/mman.h>

namespace platform::wayland {

PixelMemory::PixelMemory(const Compositor &compositor, std::size_t bytes) : size(bytes) {
    const Descriptor file = makePixelFile(bytes);
    if (!file.valid())
        throw std::bad_alloc();
    // The library sends a copy of the descriptor.
    pool.reset(wl_shm_create_pool(compositor.sharedMemory(), file.get(), static_cast<int>(bytes)));
    if (!pool)
        throw std::bad_alloc();
    base = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_POPULATE, file.get(), 0);
    if (base == MAP_FAILED)
        throw std::bad_alloc();
}

PixelMemory::~PixelMemory() {
    munmap(base, size);
}

wl_buffer *PixelMemory::bufferFor(const PixelLayout &layout) {
    if (!buffer || layout != bufferLayout) {
        bufferLayout = layout;
        buffer.reset(wl_shm_pool_create_buffer(pool.get(), 0, layout.width, layout.height,
                                               static_cast<int>(layout.rowBytes), layout.format));
    }
    return buffer.get();
}

} // namespace platform::wayland
