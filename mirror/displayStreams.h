// The display stream calls, which a later macOS may lack: they are null there, and a host that
// loads this library starts all the same. Included wherever they are called.
#pragma once

#include <CoreGraphics/CoreGraphics.h>

// NOLINTBEGIN(readability-redundant-declaration): these make them weak
extern "C" {
extern decltype(CGDisplayStreamCreateWithDispatchQueue) CGDisplayStreamCreateWithDispatchQueue
    __attribute__((weak));
extern decltype(CGDisplayStreamStart) CGDisplayStreamStart __attribute__((weak));
extern decltype(CGDisplayStreamStop) CGDisplayStreamStop __attribute__((weak));
extern decltype(kCGDisplayStreamMinimumFrameTime) kCGDisplayStreamMinimumFrameTime
    __attribute__((weak));
extern decltype(kCGDisplayStreamShowCursor) kCGDisplayStreamShowCursor __attribute__((weak));
}
// NOLINTEND(readability-redundant-declaration)

inline bool hasDisplayStreams() {
    return &CGDisplayStreamCreateWithDispatchQueue != nullptr && &CGDisplayStreamStart != nullptr &&
           &CGDisplayStreamStop != nullptr && &kCGDisplayStreamMinimumFrameTime != nullptr &&
           &kCGDisplayStreamShowCursor != nullptr;
}
