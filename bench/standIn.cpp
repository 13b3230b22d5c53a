#include "bench/standIn.h"

#include <Block.h>
#include <CoreGraphics/CoreGraphics.h>

struct __IOSurface {
    void *pixels;
};

struct CGImage {
    std::size_t width = 0;
    std::size_t height = 0;
};

struct CGDisplayStream {
    CGDisplayStreamFrameAvailableHandler handler = nullptr;
};

namespace {

CGImage screen;
CGDisplayStream stream;

} // namespace

const CFStringRef kCGDisplayStreamMinimumFrameTime = nullptr;
const CFStringRef kCGDisplayStreamShowCursor = nullptr;
const CFBooleanRef kCFBooleanFalse = nullptr;
const CFAllocatorRef kCFAllocatorDefault = nullptr;

CFNumberRef CFNumberCreate(CFAllocatorRef, CFNumberType, const void *) {
    return nullptr;
}
CFDictionaryRef CFDictionaryCreate(CFAllocatorRef, const void **, const void **, CFIndex,
                                   const CFDictionaryKeyCallBacks *,
                                   const CFDictionaryValueCallBacks *) {
    return nullptr;
}
const UInt8 *CFDataGetBytePtr(CFDataRef) {
    return nullptr;
}
void CFRelease(CFTypeRef) {}

dispatch_queue_t dispatch_queue_create(const char *, dispatch_queue_attr_t) {
    return nullptr;
}

CGError CGGetActiveDisplayList(uint32_t capacity, CGDirectDisplayID *list, uint32_t *count) {
    *count = 1;
    if (list != nullptr && capacity > 0)
        *list = bench::standInDisplay;
    return kCGErrorSuccess;
}

CGImageRef CGDisplayCreateImage(CGDirectDisplayID) {
    return &screen;
}
size_t CGImageGetWidth(CGImageRef image) {
    return image->width;
}
size_t CGImageGetHeight(CGImageRef image) {
    return image->height;
}
size_t CGImageGetBitsPerPixel(CGImageRef) {
    return 32;
}
CGDataProviderRef CGImageGetDataProvider(CGImageRef) {
    return nullptr;
}
void CGImageRelease(CGImageRef) {}
CFDataRef CGDataProviderCopyData(CGDataProviderRef) {
    return nullptr;
}

CGDisplayStreamRef
CGDisplayStreamCreateWithDispatchQueue(CGDirectDisplayID, size_t, size_t, int32_t, CFDictionaryRef,
                                       dispatch_queue_t,
                                       CGDisplayStreamFrameAvailableHandler handler) {
    if (stream.handler != nullptr)
        Block_release(stream.handler);
    stream.handler = Block_copy(handler);
    return &stream;
}
CGError CGDisplayStreamStart(CGDisplayStreamRef) {
    return kCGErrorSuccess;
}
CGError CGDisplayStreamStop(CGDisplayStreamRef) {
    return kCGErrorSuccess;
}

IOReturn IOSurfaceLock(IOSurfaceRef, IOSurfaceLockOptions, uint32_t *) {
    return 0;
}
IOReturn IOSurfaceUnlock(IOSurfaceRef, IOSurfaceLockOptions, uint32_t *) {
    return 0;
}
void *IOSurfaceGetBaseAddress(IOSurfaceRef surface) {
    return surface->pixels;
}

namespace bench {

void setStandInSize(std::size_t width, std::size_t height) {
    screen = {width, height};
}

void deliver(void *pixels) {
    __IOSurface surface{pixels};
    stream.handler(kCGDisplayStreamFrameStatusFrameComplete, 0, &surface, nullptr);
}

} // namespace bench
