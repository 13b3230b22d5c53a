// The interface to the display server: its displays and their frames.
//
// platform/x11 and platform/wayland each implement it as one table of functions. Which of them is
// used is decided when it is used, in sessionSource.cpp.
#pragma once

#include "platform/objects/clock.h"
#include "platform/objects/frameGate.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace platform {

// Four bytes per pixel, blue first, rows packed.
struct Picture {
    std::size_t width = 0;
    std::size_t height = 0;
    std::shared_ptr<const std::uint8_t> pixels;
};

struct CaptureSettings {
    std::uint32_t display = 0;
    int width = 0; // of the frames
    int height = 0;
    Clock::duration minimumFrameTime{};
};

enum class CaptureEvent {
    Frame, // the frame has been painted and handed over
    Blank, // the display is gone
};

// Frames of one display, all painted into the same memory.
struct Capture {
    std::uint8_t *pixels = nullptr;

    // Capture thread: returns when the gate is stopped or the server is gone. Calls `onEvent`, on
    // this thread, for each frame and once whenever the display disappears.
    //
    // A frame is painted when something was drawn, and never while the handler reads. It reaches
    // the handler no sooner than the minimum frame time after the last one. Frames are not queued:
    // each shows the screen at the time of painting. A still screen costs nothing.
    std::function<void(const std::function<void(CaptureEvent)> &onEvent)> run;

    // Any thread: ends a wait for the server.
    std::function<void()> breakOff;
};

// Call all of these on a host thread, under a SigpipeGuard. They are bounded in time and hold no
// connection, descriptor or thread after the call, except for what openCapture() returns. They
// throw std::bad_alloc and std::system_error.
struct Source {
    // The identifiers of the active displays, in the server's order; nothing when it did not
    // answer.
    std::optional<std::vector<std::uint32_t>> (*listDisplays)();

    // The display's current picture; nothing when the display does not exist or may not be read.
    std::optional<Picture> (*pictureOf)(std::uint32_t display);

    // Whether a capture of this display could be started now.
    bool (*canCapture)(std::uint32_t display);

    // Nothing when it cannot be started. The gate outlives the capture.
    std::optional<Capture> (*openCapture)(const CaptureSettings &settings, FrameGate &gate);
};

// The source for the session that this process is in. Any thread; bounded in time.
const Source &sessionSource();

} // namespace platform
