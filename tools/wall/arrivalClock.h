// When a datagram really arrived, though it is read later.
#pragma once

#include "tools/wall/rateMeter.h"

#include <sys/socket.h>
#include <sys/time.h>

namespace panelwall {

// Has the system note the time of arrival of every datagram that comes to this socket.
void askForArrivals(int socket);

// The room that recvmsg() needs for it.
struct ArrivalRoom {
    alignas(cmsghdr) char bytes[CMSG_SPACE(sizeof(timeval))];
};

// The time of arrival that came with a datagram, at most `now`, the time of reading it; `now` when
// none came. The system tells it by the calendar, so that setting the clock between arrival and
// reading shifts it; it is then no more than a second too early.
Clock::time_point arrivalOf(const msghdr &message, Clock::time_point now);

} // namespace panelwall
