// A fake of the frameworks, with the same function names. It records every call of the library,
// returns reference-counted objects, and delivers frames on request.
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
    std::vector<std::uint8_t> bytes = {}; // the data of its images
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

    // Callable from any thread.
    void record(const std::string &call);
    // "CGDisplayCreateImage(1) = image 1", in order.
    std::vector<std::string> calls() const;
    // Clears calls and objects, but not the script.
    void forget();

    // A copy of the handler of the stream created last; null if there is none.
    CGDisplayStreamFrameAvailableHandler handler = nullptr;

private:
    mutable std::mutex mutex;
    std::vector<std::string> recorded;
};

// The only instance in the process.
Frameworks &frameworks();

// Calls the handler of the stream created last on a new thread, and waits until it returns. Without
// `pixels`, the surface is null. Notes a problem if the surface is left locked or released.
void deliver(CGDisplayStreamFrameStatus status, const std::vector<std::uint32_t> *pixels);

} // namespace macho::fake
