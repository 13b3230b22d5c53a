// Opens the socket to the X server that DISPLAY names.
#pragma once

#include "platform/objects/clock.h"
#include "platform/objects/descriptor.h"

#include <string>

namespace platform::x11 {

struct ServerSocket {
    Descriptor descriptor; // invalid when there is no server, or when it is silent
    bool silent = false;   // there is a server, but it accepted no connection in time
    bool local = false;    // descriptors can be passed over it
    int screen = 0;        // the number of the screen that DISPLAY names
    // The cookie for this server from the user's authority file; both empty when it has none.
    std::string authorisationName;
    std::string authorisationData;
};

// Any thread. Local servers are reached over their Unix socket, others over TCP (where the look-up
// of the host name has the resolver's own time limit).
ServerSocket openServerSocket(Clock::time_point deadline);

} // namespace platform::x11
