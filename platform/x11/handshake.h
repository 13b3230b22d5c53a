// The handshake with an X server, for nothing but to be one of its clients.
#pragma once

#include "platform/objects/clock.h"
#include "platform/objects/descriptor.h"

namespace platform::x11 {

// Becomes a client of the server that DISPLAY names. Most servers reset when their last client
// leaves, and hang up on whoever is in the middle of the handshake then; as long as this client
// stays, they do not. When the server hangs up on this one it is tried again, until the deadline.
// Invalid when there is no server, or when it refuses the client or does not answer in time. Any
// thread.
Descriptor becomeClient(Clock::time_point deadline);

} // namespace platform::x11
