// The Wayland side of a running display stream: watches one output and paints frames of it.
#pragma once

#include "platform/objects/source.h"
#include "platform/wayland/compositor.h"
#include "platform/wayland/framePainter.h"
#include "platform/wayland/screenCopy.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace platform::wayland {

class Capture {
public:
    // See the functions of these names in platform/objects/source.h.
    static std::optional<Picture> picture(std::uint32_t display);
    static bool isPossible(std::uint32_t display);
    static std::unique_ptr<Capture> open(const CaptureSettings &settings, FrameGate &gate);

    // Capture thread; see platform::Capture::run. The only request that waits at the compositor is
    // for a copy when something has changed, so a still screen costs nothing. It is made once the
    // handler has returned, shortly before the minimum frame time has passed; what was drawn before
    // that counts as a change, too. No call blocks, so nothing needs to be broken off.
    void run(const std::function<void(CaptureEvent)> &onEvent);

    std::uint8_t *pixels() const { return painter.pixels(); }

private:
    Capture(const CaptureSettings &settings, FrameGate &gate,
            std::unique_ptr<Compositor> compositor);

    void aim();
    void followLayout(const std::function<void(CaptureEvent)> &onEvent);
    std::optional<Clock::time_point> nextStep() const;
    void ask();
    void beginCopy();
    bool isWatchful() const { return unchanged == 1 || unchanged == 2; }
    void keepCopy();
    void showCopy(const std::function<void(CaptureEvent)> &onEvent);
    void deliver(const std::function<void(CaptureEvent)> &onEvent);
    void startOver();
    Clock::time_point earliestHandlerCall() const;

    const CaptureSettings settings;
    FrameGate &gate;
    const Clock::duration lead; // how early the next copy begins
    const std::unique_ptr<Compositor> compositor;
    FramePainter painter;
    ScreenCopy copy;

    // Capture thread.
    const Output *output = nullptr; // null while the display is gone
    std::uint32_t global = 0;       // the output's number
    Clock::time_point notBefore{};  // the earliest next request
    int changesAsked = 0;           // the output's, when the copy was asked for
    // The number of copies in a row that showed no change; see isWatchful().
    int unchanged = 0;
    // The next copy is made without waiting for a change, and is shown even if there is none.
    bool allWanted = true;
};

} // namespace platform::wayland
