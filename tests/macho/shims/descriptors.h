// The descriptors that an image has open, and times as macOS stores them.
#pragma once

#include <cstdint>
#include <sys/time.h>

namespace macho {

// Notes that the image owns `fd` from now on. Returns `fd`; -1, for a failure, copies errno.
int adoptDescriptor(int fd);

// Refuses a call with a descriptor that the image has not opened or has closed. Negative ones pass:
// the system answers them with an error.
void checkOpen(const char *call, int fd);

struct DarwinTime {
    std::int64_t seconds;
    std::int32_t microseconds;
    std::int32_t padding;
};
static_assert(sizeof(DarwinTime) == 16);

inline timeval hostTime(const DarwinTime &time) {
    return {time.seconds, time.microseconds};
}

inline DarwinTime darwinTime(const timeval &time) {
    return {time.tv_sec, static_cast<std::int32_t>(time.tv_usec), 0};
}

} // namespace macho
