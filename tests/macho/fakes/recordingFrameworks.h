// A stand-in for the frameworks, under their names, that writes down every call of the library,
// hands out objects that are counted, and delivers frames as a test asks for them.
#pragma once

#include "tests/macho/fakes/objects.h"

#include <CoreGraphics/CoreGraphics.h>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

namespace macho::fake {

struct Display {
    CGDirectDisplayID id;
    std::size_t width;
    std::size_t height;
    std::size_t bitsPerPixel = 32;
    std::vector<std::uint8_t> bytes = {}; // what a copy of an image's data holds
};

// Set by the test before the library is called.
struct Script {
    std::vector<Display> displays;
    bool refuseStreams = false;
    CGError startResult = kCGErrorSuccess;
    CGError stopResult = kCGErrorSuccess;
};

struct Frameworks {
    Script script;
    Objects objects;

    // Any thread.
    void record(const std::string &call);
    // "CGDisplayCreateImage(1) = image 1", in order.
    std::vector<std::string> calls() const;
    // Forgets calls and objects, and keeps the script.
    void forget();

    // The handler of the stream made last, copied; null when there is none.
    CGDisplayStreamFrameAvailableHandler handler = nullptr;

private:
    mutable std::mutex mutex;
    std::vector<std::string> recorded;
};

// Those of the process.
Frameworks &frameworks();

// Calls the handler of the stream made last, from a thread of its own, and waits for its return.
// `pixels` may be null: no surface. A surface that is left locked is noted as a problem.
void deliver(CGDisplayStreamFrameStatus status, const std::vector<std::uint32_t> *pixels);

} // namespace macho::fake
