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
    // As canCapture() and openCapture() of the source.
    static bool isPossible(std::uint32_t display);
    static std::unique_ptr<Capture> open(const CaptureSettings &settings, FrameGate &gate);

    // Capture thread; see the source's. Painting begins so much sooner as it took the last time, so
    // that the reading does not add to the minimum frame time. A screen that holds still is not
    // looked at, except once, a second after its last change, in case a report of damage was lost.
    void run(const std::function<void(CaptureNews)> &news);

    // Any thread: ends a wait for the server.
    void breakOff() const { connection->breakOff(); }

    std::uint8_t *pixels() const { return painter->pixels(); }

private:
    Capture(const CaptureSettings &settings, FrameGate &gate,
            std::unique_ptr<Connection> connection, PixelFormat format);

    bool takeEvents();
    void followLayout(const std::function<void(CaptureNews)> &news);
    bool aim();
    std::optional<Clock::time_point> nextLook() const;
    void look(const std::function<void(CaptureNews)> &news);
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
    bool allWanted = true;    // the frame as a whole is not up to date
    Rect monitorArea;         // what the painter is aimed at, and in which root window
    Rect rootArea;
    bool everythingMoves = false; // the last damage covered the whole monitor
    Clock::time_point deafUntil{};
    Clock::duration lead{}; // how much sooner than the next frame may come to begin to paint it
    Clock::time_point notBefore{};                 // the earliest next look
    Clock::time_point lastWhole{};                 // when the whole frame was last painted
    std::optional<Clock::time_point> afterthought; // when to look for damage never reported
};

} // namespace platform::x11
