#include "bench/load/sending.h"

#include <ctime>
#include <new>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

static load::Sending *noted = nullptr;

static std::int64_t threadTime() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return time.tv_sec * 1'000'000'000 + time.tv_nsec;
}

// Replaces the C library's function for the whole process, including the mirroring library.
extern "C" ssize_t sendto(int fd, const void *bytes, size_t length, int flags,
                          const sockaddr *address, socklen_t addressLength) {
    const ssize_t sent = syscall(SYS_sendto, fd, bytes, length, flags, address, addressLength);
    if (noted == nullptr || address == nullptr || address->sa_family != AF_INET)
        return sent;
    const int device = load::deviceAt(reinterpret_cast<const sockaddr_in *>(address)->sin_addr);
    if (device < 0 || device >= noted->devices)
        return sent;
    load::SentTo &to = noted->to[device];
    if (to.tried == 0 && length <= load::largestDatagram) {
        std::memcpy(to.first, bytes, length);
        to.length = static_cast<std::uint32_t>(length);
    }
    if (sent == static_cast<ssize_t>(length))
        to.chain = load::chain(to.chain, bytes, length);
    else
        ++to.refused;
    ++to.tried;
    if (device == noted->devices - 1)
        noted->threadTime = threadTime();
    return sent;
}

namespace load {

Sending &makeSending(int devices) {
    void *memory =
        mmap(nullptr, sizeof(Sending), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        throw std::bad_alloc();
    auto *sending = new (memory) Sending;
    sending->devices = devices;
    sem_init(&sending->stopped, /*pshared=*/1, 0);
    return *sending;
}

void noteIn(Sending &sending) {
    noted = &sending;
}

} // namespace load
