// The part of CoreGraphics that the library uses, for machines without Apple's headers.
// Names, types and values are those of Apple's public documentation.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <IOSurface/IOSurface.h>
#include <dispatch/dispatch.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef int32_t CGError;
enum {
    kCGErrorSuccess = 0,
    kCGErrorFailure = 1000,
    kCGErrorIllegalArgument = 1001,
    kCGErrorInvalidOperation = 1010,
};

// Displays and their images.

typedef uint32_t CGDirectDisplayID;
typedef struct CGImage *CGImageRef;
typedef struct CGDataProvider *CGDataProviderRef;

// Writes at most `maxDisplays` identifiers into `activeDisplays` and their number into
// `displayCount`. With a null list, `maxDisplays` is ignored and the total number is written.
CGError CGGetActiveDisplayList(uint32_t maxDisplays, CGDirectDisplayID *activeDisplays,
                               uint32_t *displayCount);

// An image of what the display shows now, or null when there is no such display.
CGImageRef CGDisplayCreateImage(CGDirectDisplayID displayID);

// The image calls accept a null image: the sizes are 0, the provider is null, release does nothing.
size_t CGImageGetWidth(CGImageRef image);
size_t CGImageGetHeight(CGImageRef image);
size_t CGImageGetBitsPerPixel(CGImageRef image);
CGDataProviderRef CGImageGetDataProvider(CGImageRef image);
void CGImageRelease(CGImageRef image);

// A copy of the provider's bytes, owned by the caller, or null for a null provider.
CFDataRef CGDataProviderCopyData(CGDataProviderRef provider);

// Display streams.

typedef struct CGDisplayStream *CGDisplayStreamRef;
typedef const struct CGDisplayStreamUpdate *CGDisplayStreamUpdateRef;

typedef int32_t CGDisplayStreamFrameStatus;
enum {
    kCGDisplayStreamFrameStatusFrameComplete = 0,
    kCGDisplayStreamFrameStatusFrameIdle = 1,
    kCGDisplayStreamFrameStatusFrameBlank = 2,
    kCGDisplayStreamFrameStatusStopped = 3,
};

extern const CFStringRef kCGDisplayStreamMinimumFrameTime;
extern const CFStringRef kCGDisplayStreamShowCursor;

// Called on the stream's dispatch queue. `frameSurface` is null unless the status is complete.
typedef void (^CGDisplayStreamFrameAvailableHandler)(CGDisplayStreamFrameStatus status,
                                                     uint64_t displayTime,
                                                     IOSurfaceRef frameSurface,
                                                     CGDisplayStreamUpdateRef updateRef);

// Null when the display is unknown or may not be captured. The handler block is copied.
CGDisplayStreamRef
CGDisplayStreamCreateWithDispatchQueue(CGDirectDisplayID display, size_t outputWidth,
                                       size_t outputHeight, int32_t pixelFormat,
                                       CFDictionaryRef properties, dispatch_queue_t queue,
                                       CGDisplayStreamFrameAvailableHandler handler);

CGError CGDisplayStreamStart(CGDisplayStreamRef displayStream);
CGError CGDisplayStreamStop(CGDisplayStreamRef displayStream);

#ifdef __cplusplus
}
#endif
