// Waits on descriptors: bounded, and ended by another thread.
#pragma once

#include "platform/objects/clock.h"
#include "platform/objects/descriptor.h"

#include <optional>

namespace platform {

// Waits for one of poll()'s events, even if signals interrupt it; false when the deadline passed
// first.
bool waitUntilReady(int fd, short events, Clock::time_point deadline);

class WakeUp {
public:
    // Throws std::system_error when no descriptor is left.
    WakeUp();

    // Any thread, also in a signal handler. Several signals count as one.
    void signal();

    // Waits until a signal came, `fd` (unless it is -1) can be read or has hung up, or `deadline`
    // has passed (no deadline: for ever). Consumes the signal and returns true if there was one.
    bool wait(int fd, std::optional<Clock::time_point> deadline);

private:
    Descriptor event;
};

} // namespace platform
