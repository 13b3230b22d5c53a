#include "tests/mirror/heldMemory.h"

#include <csignal>
#include <cstdlib>
#include <semaphore.h>
#include <sys/mman.h>

namespace test {

namespace {
sem_t held; // posted when a thread is held
sem_t free_;
bool isHeld = false; // by the thread that waits for `held`
struct sigaction before;
} // namespace

// On the thread that is held.
void HeldMemory::hold(int) {
    sem_post(&held);
    while (sem_wait(&free_) != 0) {
    }
}

HeldMemory::HeldMemory(std::size_t bytes)
    : base(static_cast<unsigned char *>(
          mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))),
      size(bytes) {
    if (base == MAP_FAILED)
        std::abort();
    sem_init(&held, 0, 0);
    sem_init(&free_, 0, 0);
    isHeld = false;
    struct sigaction action = {};
    action.sa_handler = hold;
    sigaction(SIGSEGV, &action, &before);
}

HeldMemory::~HeldMemory() {
    sigaction(SIGSEGV, &before, nullptr);
    munmap(base, size);
    sem_destroy(&held);
    sem_destroy(&free_);
}

void HeldMemory::holdReaders() const {
    mprotect(base + size / 2, size / 2, PROT_NONE);
}

void HeldMemory::holdWriters() const {
    mprotect(base + size / 2, size / 2, PROT_READ);
}

void HeldMemory::open() const {
    mprotect(base + size / 2, size / 2, PROT_READ | PROT_WRITE);
}

void HeldMemory::awaitSomebody() {
    while (sem_wait(&held) != 0) {
    }
    isHeld = true;
}

void HeldMemory::letGo() {
    open();
    if (isHeld)
        sem_post(&free_);
    isHeld = false;
}

} // namespace test
