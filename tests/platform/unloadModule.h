// What unloadTest asks of the module that it loads and unloads.
#pragma once

#include <CoreGraphics/CoreGraphics.h>

// Starts a stream of the display. `frames` counts the complete frames. When the module is unloaded,
// a static object's destructor writes the result of its own attempt to stop the stream into
// `stopResult`, or, when that is null, makes none. Returns the result of the start.
using StartInModule = CGError(CGDirectDisplayID display, int *frames, CGError *stopResult);
