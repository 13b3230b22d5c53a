#include "tools/wall/arrivalClock.h"

#include <algorithm>
#include <cstring>

namespace panelwall {

static constexpr std::chrono::microseconds longestWait{1'000'000};

void askForArrivals(int socket) {
    const int on = 1;
    setsockopt(socket, SOL_SOCKET, SO_TIMESTAMP, &on, sizeof on);
}

Clock::time_point arrivalOf(const msghdr &message, Clock::time_point now) {
    auto *header = message.msg_controllen > 0 ? CMSG_FIRSTHDR(&message) : nullptr;
    if (header == nullptr || header->cmsg_level != SOL_SOCKET || header->cmsg_type != SCM_TIMESTAMP)
        return now;
    timeval arrival;
    std::memcpy(&arrival, CMSG_DATA(header), sizeof arrival);
    timeval read;
    gettimeofday(&read, nullptr);
    const std::chrono::microseconds waited =
        std::chrono::seconds(read.tv_sec - arrival.tv_sec) +
        std::chrono::microseconds(read.tv_usec - arrival.tv_usec);
    return now - std::clamp(waited, std::chrono::microseconds::zero(), longestWait);
}

} // namespace panelwall
