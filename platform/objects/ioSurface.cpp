#include "platform/objects/ioSurface.h"

namespace {

constexpr IOReturn badArgument = static_cast<IOReturn>(0xe00002c2);

} // namespace

// A frame is not written while a handler has it, so a lock has nothing to do.
IOReturn IOSurfaceLock(IOSurfaceRef buffer, IOSurfaceLockOptions, uint32_t *seed) {
    if (buffer == nullptr)
        return badArgument;
    if (seed != nullptr)
        *seed = 0;
    return 0;
}

IOReturn IOSurfaceUnlock(IOSurfaceRef buffer, IOSurfaceLockOptions options, uint32_t *seed) {
    return IOSurfaceLock(buffer, options, seed);
}

void *IOSurfaceGetBaseAddress(IOSurfaceRef buffer) {
    return buffer == nullptr ? nullptr : buffer->base;
}
