// Passes the one frame between the capture thread, which paints it, and the queue's thread, where
// the handler reads it; also carries the stop request.
#pragma once

#include "platform/objects/clock.h"
#include "platform/objects/wakeUp.h"

#include <atomic>
#include <optional>

namespace platform {

class FrameGate {
public:
    // Capture thread: whether the frame may be painted. If not, giveBack() ends the next wait().
    bool isFree();

    // Capture thread: passes the frame to the queue.
    void handOver() { taken.store(true); }

    // Queue's thread: call begin() before the handler and giveBack() after it. begin() returns the
    // time of the call.
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
