// The frame buffer and the display stream that keeps it current.
#include "mirror/displayStreams.h"
#include "mirror/firstFrame.h"
#include "mirror/frameLease.h"
#include "mirror/screenMirrorMac.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <limits>

namespace {

// 'BGRA', as a four-character code.
constexpr std::int32_t pixelFormatBGRA = 0x42475241;

// In the frame buffer and in a stream's frames, whatever the depth of the display's images.
constexpr unsigned long pixelBytes = 4;

// The size of a stream's frames.
struct FrameSize {
    unsigned long width;
    unsigned long height;
};

// Stream queue. Copies a complete frame; idle, blank and stopped notifications leave the last one
// in place. The surface's rows are tightly packed. A stream that outlived its configuration, for
// example after a failed run, may have frames of another size, which are ignored.
void takeFrame(const MirrorManager &manager, FrameSize size, CGDisplayStreamFrameStatus status,
               IOSurfaceRef surface) {
    if (status != kCGDisplayStreamFrameStatusFrameComplete || surface == nullptr)
        return;
    if (size.width != manager.screenWidth || size.height != manager.screenHeight)
        return;
    const FrameLease lease; // a stop does not always wait for this queue
    IOSurfaceLock(surface, kIOSurfaceLockReadOnly, nullptr);
    if (unsigned char *buffer = __atomic_load_n(&manager.frameBuffer, __ATOMIC_SEQ_CST)) {
        const FrameArrival arrival;
        std::memcpy(buffer, IOSurfaceGetBaseAddress(surface),
                    size.width * size.height * std::min(manager.bytesPerPixel, pixelBytes));
    }
    IOSurfaceUnlock(surface, kIOSurfaceLockReadOnly, nullptr);
}

// Bytes of a frame with four bytes per pixel. If they do not fit 64 bits: the largest size, which
// no allocation can satisfy.
std::size_t frameSize(unsigned long width, unsigned long height) {
    std::size_t size = 0;
    if (__builtin_mul_overflow(width, height, &size) ||
        __builtin_mul_overflow(size, pixelBytes, &size))
        return std::numeric_limits<std::size_t>::max();
    return size;
}

} // namespace

void *MirrorManager::initScreen() {
    image = CGDisplayCreateImage(displayID);
    screenWidth = CGImageGetWidth(image);
    screenHeight = CGImageGetHeight(image);
    bytesPerPixel = CGImageGetBitsPerPixel(image) >> 3;
    CGImageRelease(image);

    // Reset before the allocation: if that fails, no frame of the new size may be copied into a
    // buffer of the old size.
    frameBuffer = nullptr;
    firstFrame = FirstFrame::Awaited;
    frameBuffer = new unsigned char[frameSize(screenWidth, screenHeight)]();
    return frameBuffer;
}

void MirrorManager::deInitScreen() {
    unsigned char *buffer = frameBuffer;
    __atomic_store_n(&frameBuffer, nullptr, __ATOMIC_SEQ_CST);
    if (FrameLease::awaitNone())
        delete[] buffer;
}

Frame MirrorManager::currentFrame() const {
    return {__atomic_load_n(&frameBuffer, __ATOMIC_SEQ_CST),
            std::uint64_t{screenWidth} * screenHeight};
}

int MirrorManager::initDisplayStream() {
    displayStream = nullptr; // on failure, a stream of another size must not remain
    if (!hasDisplayStreams()) {
        std::puts("This system has no display streams!");
        return 0;
    }
    try {
        const CFNumberRef frameTime =
            CFNumberCreate(kCFAllocatorDefault, kCFNumberDoubleType, &minimumFrameTime);
        const void *keys[] = {kCGDisplayStreamMinimumFrameTime, kCGDisplayStreamShowCursor};
        const void *values[] = {frameTime, kCFBooleanFalse};
        const CFDictionaryRef options =
            CFDictionaryCreate(kCFAllocatorDefault, keys, values, 2, nullptr, nullptr);
        const FrameSize size{screenWidth, screenHeight};
        const dispatch_queue_t queue = dispatch_queue_create("queue for dispatch", nullptr);
        displayStream = CGDisplayStreamCreateWithDispatchQueue(
            displayID, screenWidth, screenHeight, pixelFormatBGRA, options, queue,
            ^(CGDisplayStreamFrameStatus status, std::uint64_t, IOSurfaceRef surface,
              CGDisplayStreamUpdateRef) {
              takeFrame(*this, size, status, surface);
            });
        if (displayStream == nullptr) {
            std::puts("Screen Recording not allowed!");
            return 0;
        }
        return 1;
    } catch (...) {
        std::puts("CGDisplayStream Initialization failed!");
        return -1;
    }
}

void MirrorManager::grabScreen() {
    image = CGDisplayCreateImage(displayID);
    dataProvider = CGImageGetDataProvider(image);
    imageData = CGDataProviderCopyData(dataProvider);
    if (imageData != nullptr) { // null when the display has gone
        std::memcpy(frameBuffer, CFDataGetBytePtr(imageData),
                    screenHeight * screenWidth * std::min(bytesPerPixel, pixelBytes));
        CFRelease(imageData);
    }
    CGImageRelease(image);
}
