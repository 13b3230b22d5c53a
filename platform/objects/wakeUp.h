// Ends another thread's wait on descriptors.
#pragma once

#include "platform/objects/clock.h"
#include "platform/objects/descriptor.h"

#include <optional>

namespace platform {

class WakeUp {
public:
    // Throws std::system_error when no descriptor is left.
    WakeUp();

    // Any thread, also from within a signal handler. Signals add up to one.
    void signal();

    // Waits until a signal came, `fd` (unless it is -1) can be read or has hung up, or `deadline`
    // has passed (no deadline: for ever). Takes the signal. True when it was a signal.
    bool wait(int fd, std::optional<Clock::time_point> deadline);

private:
    Descriptor event;
};

} // namespace platform
