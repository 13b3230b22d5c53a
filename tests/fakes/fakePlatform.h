// A stand-in for the system's display calls: displays, refusals and frames as a test scripts them.
// What a real screen can show is tested on a real screen; this is for what one cannot ask of it.
#pragma once

#include <CoreGraphics/CoreGraphics.h>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace fake {

struct Display {
    CGDirectDisplayID id = 1;
    std::size_t width = 0;
    std::size_t height = 0;
    std::size_t bitsPerPixel = 32;
};

// What the library asked for when it created the stream.
struct StreamRequest {
    CGDirectDisplayID display = 0;
    std::size_t width = 0;
    std::size_t height = 0;
    std::int32_t pixelFormat = 0;
    double minimumFrameTime = -1;
    bool showsCursor = true;
    CFIndex optionCount = 0;
    std::string queueLabel;
    bool serialQueue = false;
};

struct Platform {
    std::vector<Display> displays;
    bool refuseListing = false; // of the identifiers; their count is told
    bool refuseStreams = false;
    bool throwOnCreate = false;
    bool throwOnStart = false;
    CGError startResult = kCGErrorSuccess;
    CGError stopResult = kCGErrorSuccess;
    std::chrono::milliseconds stopTime{0}; // that a stop takes
    std::vector<std::uint8_t> imageBytes;  // what CGDataProviderCopyData hands out

    // Recorded.
    StreamRequest request;
    std::vector<std::string> calls; // names of the display and stream calls, in order
    int imagesAlive = 0;
};

// The one platform of the process.
Platform &platform();

// How often a call has been made; safe while a run is under way.
int callCount(const std::string &name);
void forgetCalls();

// Back to one display, 1, of the given size, with nothing recorded.
void reset(std::size_t width, std::size_t height);

// Frees the streams, queues and dictionaries made so far, which the library never releases. Nothing
// may use them any more, the display stream of the manager included.
void freeCreated();

// Calls the handler of the stream made last from a thread of its own and returns when it is done.
// `pixels` may be null: no surface.
void deliver(CGDisplayStreamFrameStatus status, const std::vector<std::uint32_t> *pixels);

} // namespace fake
