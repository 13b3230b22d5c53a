// std::mutex with its macOS layout.
#pragma once

#include <cstdint>
#include <pthread.h>

namespace macho {

// A signature and 56 bytes, which hold this system's mutex. On both systems these bytes are zero in
// a new mutex.
struct DarwinMutex {
    std::int64_t signature;
    union {
        char room[56];
        pthread_mutex_t host;
    };
};
static_assert(sizeof(DarwinMutex) == 64);

void lockMutex(DarwinMutex *mutex);
void unlockMutex(DarwinMutex *mutex) noexcept;

} // namespace macho
