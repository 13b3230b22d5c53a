// Shuts a socket down when its peer takes too long, so that no call on it can block for ever.
//
// XCB has no time-outs: it waits without limit for the handshake, for every reply and even for the
// rest of a reply that has begun. Shutting the socket down ends all of these waits at once.
#pragma once

#include "platform/objects/clock.h"
#include "platform/objects/descriptor.h"
#include "platform/objects/wakeUp.h"

#include <atomic>
#include <thread>

namespace platform {

class Watchdog {
public:
    // Watches from now on, on its own thread; `fd` may be closed meanwhile. Throws
    // std::system_error when it cannot be set up.
    explicit Watchdog(int fd);
    // Ends the watch and the thread.
    ~Watchdog();
    Watchdog(const Watchdog &) = delete;
    Watchdog &operator=(const Watchdog &) = delete;

    // The peer has made progress: the time limit starts again.
    void extend();

private:
    void watch();

    Descriptor socket;
    WakeUp ended;
    std::atomic<Clock::time_point> deadline;
    std::thread thread;
};

} // namespace platform
