#include "bench/frameCount.h"

#include <IOSurface/IOSurface.h>

namespace {

std::atomic<long> uncounted;
std::atomic<long> *taken = &uncounted;

} // namespace

extern "C" IOReturn __real_IOSurfaceLock(IOSurfaceRef, IOSurfaceLockOptions, uint32_t *);

extern "C" IOReturn __wrap_IOSurfaceLock(IOSurfaceRef surface, IOSurfaceLockOptions options,
                                         uint32_t *seed) {
    ++*taken;
    return __real_IOSurfaceLock(surface, options, seed);
}

namespace bench {

void countFrames(std::atomic<long> &frames) {
    taken = &frames;
}

} // namespace bench
