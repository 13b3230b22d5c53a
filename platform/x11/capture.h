// The X side of a running display stream: watches one monitor and paints frames of it.
#pragma once

#include "platform/x11/connection.h"
#include "platform/x11/damageWatch.h"
#include "platform/x11/frameGate.h"
#include "platform/x11/framePainter.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace x11 {

struct CaptureSettings {
    std::uint32_t display = 0;
    int width = 0; // of the frames
    int height = 0;
    Clock::duration minimumFrameTime{};
};

enum class CaptureNews {
    Frame, // the frame has been painted and handed over
    Blank, // the monitor is gone
};

class Capture {
public:
    // True when a capture of this display can be started: the server, the monitor, a usable pixel
    // format and the extensions are there. Host's thread; takes nothing that outlasts the call.
    static bool isPossible(std::uint32_t display);

    // Null when it cannot be started. Host's thread, under a SigpipeGuard; bounded in time. Throws
    // std::bad_alloc and std::system_error.
    static std::unique_ptr<Capture> open(const CaptureSettings &settings, FrameGate &gate);

    // Capture thread: returns when the gate is stopped or the server is gone. Tells `news`, on
    // this thread, about each frame and, once each time, about the loss of the monitor.
    //
    // A frame is painted when something was drawn, and never while the handler reads. It reaches
    // the handler at the earliest the minimum frame time after the last one; painting begins so
    // much sooner as it took the last time, so that the reading does not add to that time. Nothing
    // is queued: what is painted is what the screen shows then. A screen that holds still is not
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

} // namespace x11
