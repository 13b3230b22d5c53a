// The interface between unloadTest and the module that it loads and unloads.
#pragma once

#include <CoreGraphics/CoreGraphics.h>
#include <atomic>

// One run, owned by the test: the module's own memory is gone after the unload.
struct ModuleRun {
    std::atomic<int> frames = 0; // complete frames so far
    // Whether a static object of the module stops the stream in its destructor, and with what
    // result.
    bool stopInDestructor = false;
    CGError stopResult = -1;
    dispatch_queue_t queue = nullptr;
    CGDisplayStreamRef stream = nullptr;
};

// Starts a stream of the display; returns the result of the start.
using StartInModule = CGError(CGDirectDisplayID display, ModuleRun *run);
