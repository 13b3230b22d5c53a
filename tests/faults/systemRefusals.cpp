#include "tests/faults/systemRefusals.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr int none = -1;
std::atomic<int> refusedKind = none;
std::atomic<int> refusals = 0;

bool isRefused(test::Refusal kind) {
    if (refusedKind != static_cast<int>(kind))
        return false;
    ++refusals;
    return true;
}

} // namespace

namespace test {

Refused::Refused(Refusal what) {
    refusals = 0;
    refusedKind = static_cast<int>(what);
}

Refused::~Refused() {
    refusedKind = none;
}

int Refused::times() const {
    return refusals;
}

} // namespace test

extern "C" {

int memfd_create(const char *name, unsigned flags) noexcept {
    if (isRefused(test::Refusal::MakeFile)) {
        errno = ENFILE;
        return -1;
    }
    return static_cast<int>(syscall(SYS_memfd_create, name, flags));
}

int fchmod(int fd, mode_t mode) noexcept {
    if (isRefused(test::Refusal::ProtectFile)) {
        errno = EPERM;
        return -1;
    }
    return static_cast<int>(syscall(SYS_fchmod, fd, mode));
}

int posix_fallocate(int fd, off_t offset, off_t length) {
    if (isRefused(test::Refusal::FillFile))
        return ENOSPC;
    sigset_t blocked;
    pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
    if (sigismember(&blocked, SIGALRM) == 0 && isRefused(test::Refusal::FillInPeace))
        return EINTR;
    return syscall(SYS_fallocate, fd, 0, offset, length) == 0 ? 0 : errno;
}

void *mmap(void *wanted, std::size_t length, int protection, int flags, int fd,
           off_t offset) noexcept {
    const bool isFrame = length >= std::size_t{640} * 480 * 4;
    if (isFrame && isRefused(test::Refusal::MapFrame)) {
        errno = ENOMEM;
        return MAP_FAILED;
    }
    return reinterpret_cast<void *>(
        syscall(SYS_mmap, wanted, length, protection, flags, fd, offset));
}
}
