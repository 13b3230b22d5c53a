// A fake of the system's display calls, with displays, failures and frames scripted by the test. It
// is only for cases that a real screen cannot produce; the others are tested on a real screen.
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

// The arguments with which the library created the stream.
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
    bool refuseListing = false; // of the identifiers; their count is still returned
    bool refuseStreams = false;
    bool throwOnCreate = false;
    bool throwOnStart = false;
    CGError startResult = kCGErrorSuccess;
    CGError stopResult = kCGErrorSuccess;
    std::chrono::milliseconds stopTime{0}; // how long a stop takes
    std::vector<std::uint8_t> imageBytes;  // returned by CGDataProviderCopyData

    // Recorded.
    StreamRequest request;
    std::vector<std::string> calls; // names of the display and stream calls, in order
    int imagesAlive = 0;
};

// The one platform of the process.
Platform &platform();

// The number of these calls so far; safe during a run.
int callCount(const std::string &name);
void forgetCalls();

// Resets to one display with identifier 1 and the given size, and clears the records.
void reset(std::size_t width, std::size_t height);

// Frees the streams, queues and dictionaries made so far, which the library never releases. They
// must no longer be in use, including the manager's display stream.
void freeCreated();

// Calls the handler of the newest stream on a separate thread and returns when it has finished.
// `pixels` may be null: no surface.
void deliver(CGDisplayStreamFrameStatus status, const std::vector<std::uint32_t> *pixels);

} // namespace fake
