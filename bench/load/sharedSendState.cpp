#include "bench/load/sharedSendState.h"

#include <ctime>
#include <new>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

static load::SharedSendState *recordedState = nullptr;

static std::int64_t threadTime() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return time.tv_sec * 1'000'000'000 + time.tv_nsec;
}

// Replaces the C library's function for the whole process, including the mirroring library.
extern "C" ssize_t sendto(int fd, const void *bytes, size_t length, int flags,
                          const sockaddr *address, socklen_t addressLength) {
    const ssize_t sent = syscall(SYS_sendto, fd, bytes, length, flags, address, addressLength);
    if (recordedState == nullptr || address == nullptr || address->sa_family != AF_INET)
        return sent;
    const int device = load::deviceAt(reinterpret_cast<const sockaddr_in *>(address)->sin_addr);
    if (device < 0 || device >= recordedState->devices)
        return sent;
    load::SentTo &to = recordedState->to[device];
    if (to.tried == 0 && length <= load::largestDatagram) {
        std::memcpy(to.first, bytes, length);
        to.length = static_cast<std::uint32_t>(length);
    }
    if (sent == static_cast<ssize_t>(length))
        to.chain = load::chain(to.chain, bytes, length);
    else
        ++to.refused;
    ++to.tried;
    if (device == recordedState->devices - 1)
        recordedState->threadTime = threadTime();
    return sent;
}

namespace load {

SharedSendState &makeSharedSendState(int devices) {
    void *memory = mmap(nullptr, sizeof(SharedSendState), PROT_READ | PROT_WRITE,
                        MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        throw std::bad_alloc();
    auto *state = new (memory) SharedSendState;
    state->devices = devices;
    sem_init(&state->stopped, /*pshared=*/1, 0);
    return *state;
}

void recordSendsTo(SharedSendState &state) {
    recordedState = &state;
}

} // namespace load
