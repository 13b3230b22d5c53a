#include "tests/macho/shims/refuse.h"
#include "tests/macho/shims/system.h"

#include <cstdint>
#include <pthread.h>
#include <string>
#include <system_error>

namespace macho {

namespace {

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

constexpr std::int64_t staticSignature = 0x32aaaba7; // of PTHREAD_MUTEX_INITIALIZER
constexpr std::int64_t destroyedSignature = 0;

pthread_mutex_t *checked(const char *call, DarwinMutex *mutex) {
    if (mutex->signature != staticSignature)
        refuse(std::string(call) + " of a mutex that is none: it was never made, or is destroyed");
    return &mutex->host;
}

void lockMutex(DarwinMutex *mutex) {
    if (const int error = pthread_mutex_lock(checked("lock", mutex)))
        std::__throw_system_error(error, "mutex lock failed");
}

bool tryLockMutex(DarwinMutex *mutex) noexcept {
    return pthread_mutex_trylock(checked("try_lock", mutex)) == 0;
}

void unlockMutex(DarwinMutex *mutex) noexcept {
    if (pthread_mutex_unlock(checked("unlock", mutex)) != 0)
        refuse("unlock of a mutex that is not locked");
}

void destroyMutex(DarwinMutex *mutex) noexcept {
    if (pthread_mutex_destroy(checked("destruction", mutex)) != 0 && !libraryIsExiting())
        refuse("destruction of a locked mutex");
    mutex->signature = destroyedSignature;
}

} // namespace

void addMutexes(Imports &imports) {
    imports.add(libCxx, "__ZNSt3__15mutex4lockEv", lockMutex);
    imports.add(libCxx, "__ZNSt3__15mutex8try_lockEv", tryLockMutex);
    imports.add(libCxx, "__ZNSt3__15mutex6unlockEv", unlockMutex);
    imports.add(libCxx, "__ZNSt3__15mutexD1Ev", destroyMutex);
}

} // namespace macho
