// The X side of a running display stream: watches one monitor and paints frames of it.
#pragma once

#include "platform/objects/source.h"
#include "platform/x11/connection.h"
#include "platform/x11/damageWatch.h"
#include "platform/x11/framePainter.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace platform::x11 {

class Capture {
public:
    // See canCapture() and openCapture() in platform/objects/source.h.
    static bool isPossible(std::uint32_t display);
    static std::unique_ptr<Capture> open(const CaptureSettings &settings, FrameGate &gate);

    // Capture thread; see platform::Capture::run. Painting starts early by the time that it took
    // last, so that reading does not add to the minimum frame time. A still screen is not checked,
    // except once, a second after its last change, in case a damage report was lost.
    void run(const std::function<void(CaptureEvent)> &onEvent);

    // Any thread: ends a wait for the server.
    void breakOff() const { connection->breakOff(); }

    std::uint8_t *pixels() const { return painter->pixels(); }

private:
    Capture(const CaptureSettings &settings, FrameGate &gate,
            std::unique_ptr<Connection> connection, PixelFormat format);

    bool takeEvents();
    void followLayout(const std::function<void(CaptureEvent)> &onEvent);
    bool aim();
    std::optional<Clock::time_point> nextLook() const;
    void look(const std::function<void(CaptureEvent)> &onEvent);
    Clock::time_point earliestHandlerCall() const;
    ReadOutcome update(Clock::time_point now, bool &changed);

    const CaptureSettings settings;
    FrameGate &gate;
    std::unique_ptr<Connection> connection;
    std::unique_ptr<FramePainter> painter;
    std::unique_ptr<DamageWatch> damage;

    // Capture thread.
    bool present = false;     // the monitor is there
    bool layoutStale = false; // monitors or root window may have changed
    bool damaged = false;     // something was drawn since the last look
    bool allWanted = true;    // the whole frame has to be painted
    Rect monitorArea;         // the area that the painter shows, and the root window's
    Rect rootArea;
    bool everythingMoves = false; // the last damage covered the whole monitor
    Clock::time_point pauseUntil{};
    Clock::duration lead{};        // how early to start painting the next frame
    Clock::time_point notBefore{}; // the earliest next look
    Clock::time_point lastWhole{}; // when the whole frame was last painted
    std::optional<Clock::time_point> lostDamageCheckTime; // when to check for unreported damage
};

} // namespace platform::x11
