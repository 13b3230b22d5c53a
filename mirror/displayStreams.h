// Makes the display stream functions weak. A later macOS may lack them: they are null there, and a
// host that loads this library still starts. Include this header wherever they are called.
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
