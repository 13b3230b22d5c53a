// Breaks a socket off when its other end takes too long, so that no call on it can block for ever.
//
// XCB knows no time-outs: the handshake, every reply and even the rest of a reply that has begun
// are waited for without limit. A socket that is shut down ends all of these waits at once.
#pragma once

#include "platform/objects/clock.h"
#include "platform/objects/descriptor.h"
#include "platform/objects/wakeUp.h"

#include <atomic>
#include <thread>

namespace platform {

class Watchdog {
public:
    // Watches from now on, over a thread of its own; `fd` may be closed meanwhile. Throws
    // std::system_error when it cannot be set up.
    explicit Watchdog(int fd);
    // Ends the watch and the thread.
    ~Watchdog();
    Watchdog(const Watchdog &) = delete;
    Watchdog &operator=(const Watchdog &) = delete;

    // The other end has made progress: the time starts afresh.
    void extend();

private:
    void watch();

    Descriptor socket;
    WakeUp ended;
    std::atomic<Clock::time_point> deadline;
    std::thread thread;
};

} // namespace platform
