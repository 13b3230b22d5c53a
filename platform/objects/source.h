// What the desktop's calls need of the system's display server: its displays and their frames.
// platform/x11 has these functions.
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

// All of these: host's thread, under a SigpipeGuard; bounded in time. They take nothing that
// outlasts the call, but for what openCapture() returns. Throw std::bad_alloc and
// std::system_error.

// The identifiers of the active displays, in the server's order; nothing when it did not answer.
std::optional<std::vector<std::uint32_t>> listDisplays();

// Four bytes a pixel, blue first, rows packed.
struct Picture {
    std::size_t width = 0;
    std::size_t height = 0;
    std::shared_ptr<const std::uint8_t> pixels;
};

// What the display shows at the call; nothing when it is not there or may not be read.
std::optional<Picture> pictureOf(std::uint32_t display);

struct CaptureSettings {
    std::uint32_t display = 0;
    int width = 0; // of the frames
    int height = 0;
    Clock::duration minimumFrameTime{};
};

enum class CaptureNews {
    Frame, // the frame has been painted and handed over
    Blank, // the display is gone
};

// Frames of one display, painted into one place.
struct Capture {
    std::uint8_t *pixels = nullptr;

    // Capture thread: returns when the gate is stopped or the server is gone. Tells `news`, on this
    // thread, about each frame and, once each time, about the loss of the display.
    //
    // A frame is painted when something was drawn, and never while the handler reads. It reaches
    // the handler at the earliest the minimum frame time after the last one. Nothing is queued:
    // what is painted is what the screen shows then. A screen that holds still costs nothing.
    std::function<void(const std::function<void(CaptureNews)> &news)> run;

    // Any thread: ends a wait for the server.
    std::function<void()> breakOff;
};

// Whether a capture of this display could be started now.
bool canCapture(std::uint32_t display);

// Nothing when it cannot be started. The gate outlives the capture.
std::optional<Capture> openCapture(const CaptureSettings &settings, FrameGate &gate);

} // namespace platform
