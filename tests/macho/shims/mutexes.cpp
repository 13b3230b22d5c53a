#include "tests/macho/shims/mutexes.h"
#include "tests/macho/shims/refuse.h"
#include "tests/macho/shims/system.h"

#include <string>
#include <system_error>

namespace macho {

namespace {

constexpr std::int64_t staticSignature = 0x32aaaba7; // of PTHREAD_MUTEX_INITIALIZER
constexpr std::int64_t destroyedSignature = 0;

pthread_mutex_t *checked(const char *call, DarwinMutex *mutex) {
    if (mutex->signature != staticSignature)
        refuse(std::string(call) + " of a mutex that is none: it was never made, or is destroyed");
    return &mutex->host;
}

bool tryLockMutex(DarwinMutex *mutex) noexcept {
    return pthread_mutex_trylock(checked("try_lock", mutex)) == 0;
}

void destroyMutex(DarwinMutex *mutex) noexcept {
    if (pthread_mutex_destroy(checked("destruction", mutex)) != 0 && !libraryIsExiting())
        refuse("destruction of a locked mutex");
    mutex->signature = destroyedSignature;
}

} // namespace

void lockMutex(DarwinMutex *mutex) {
    if (const int error = pthread_mutex_lock(checked("lock", mutex)))
        std::__throw_system_error(error, "mutex lock failed");
}

void unlockMutex(DarwinMutex *mutex) noexcept {
    if (pthread_mutex_unlock(checked("unlock", mutex)) != 0)
        refuse("unlock of a mutex that is not locked");
}

void addMutexes(Imports &imports) {
    imports.add(libCxx, "__ZNSt3__15mutex4lockEv", lockMutex);
    imports.add(libCxx, "__ZNSt3__15mutex8try_lockEv", tryLockMutex);
    imports.add(libCxx, "__ZNSt3__15mutex6unlockEv", unlockMutex);
    imports.add(libCxx, "__ZNSt3__15mutexD1Ev", destroyMutex);
}

} // namespace macho
