// Passes the one frame between the capture thread, which paints it, and the queue's thread, where
// the handler reads it; and carries the wish to stop.
#pragma once

#include "platform/objects/clock.h"
#include "platform/objects/wakeUp.h"

#include <atomic>
#include <optional>

namespace platform {

class FrameGate {
public:
    // Capture thread: whether the frame may be painted. When it may not, the end of the handler
    // ends the next wait().
    bool isFree();

    // Capture thread: the frame is now the queue's.
    void handOver() { taken.store(true); }

    // Queue's thread: the handler is about to be called, at the time returned; it has returned.
    Clock::time_point begin();
    void giveBack();

    // When the handler was last called with a frame.
    Clock::time_point lastHandlerCall() const { return lastBegin.load(); }

    // Any thread.
    void stop();
    bool isStopped() const { return stopped.load(); }

    // Capture thread: see WakeUp::wait().
    void wait(int fd, std::optional<Clock::time_point> deadline) { wakeUp.wait(fd, deadline); }

private:
    std::atomic<bool> taken = false;
    std::atomic<bool> wanted = false;
    std::atomic<bool> stopped = false;
    std::atomic<Clock::time_point> lastBegin{Clock::time_point{}};
    WakeUp wakeUp;
};

} // namespace platform
