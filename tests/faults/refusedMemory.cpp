#include "tests/faults/refusedMemory.h"

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <malloc.h>

extern "C" {
void *__libc_malloc(std::size_t);
void *__libc_calloc(std::size_t, std::size_t);
void *__libc_realloc(void *, std::size_t);
void *__libc_memalign(std::size_t, std::size_t);
void __libc_free(void *);
}

namespace {

std::atomic<long> out = 0;
std::atomic<bool> refusing = false;
std::atomic<int> untilRefusal = 0;
std::atomic<bool> wasRefused = false;
bool goesOn = false;
bool chosenThread = false;                   // `chooses` of the threads to refuse
constinit thread_local bool chooses = false; // set in the thread that made the object

bool isRefused() {
    if (!refusing || chooses != chosenThread)
        return false;
    const int left = --untilRefusal;
    if (left > 0 || (left < 0 && !goesOn))
        return false;
    wasRefused = true;
    errno = ENOMEM;
    return true;
}

void *counted(void *memory) {
    if (memory != nullptr)
        ++out;
    return memory;
}

} // namespace

namespace test {

RefusedMemory::RefusedMemory(Who who, int nth, bool forGood) {
    chooses = true;
    chosenThread = who == Who::ThisThread;
    goesOn = forGood;
    untilRefusal = nth;
    wasRefused = false;
    refusing = true;
}

RefusedMemory::~RefusedMemory() {
    refusing = false;
    chooses = false;
}

bool RefusedMemory::happened() {
    return wasRefused;
}

long piecesOut() {
    return out;
}

} // namespace test

extern "C" {

void *malloc(std::size_t size) noexcept {
    return isRefused() ? nullptr : counted(__libc_malloc(size));
}

void *calloc(std::size_t count, std::size_t size) noexcept {
    return isRefused() ? nullptr : counted(__libc_calloc(count, size));
}

void *realloc(void *memory, std::size_t size) noexcept {
    if (memory == nullptr)
        return malloc(size);
    if (size == 0) {
        free(memory);
        return nullptr;
    }
    return isRefused() ? nullptr : __libc_realloc(memory, size);
}

void *memalign(std::size_t alignment, std::size_t size) noexcept {
    return isRefused() ? nullptr : counted(__libc_memalign(alignment, size));
}

void *aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    return memalign(alignment, size);
}

int posix_memalign(void **memory, std::size_t alignment, std::size_t size) noexcept {
    void *got = memalign(alignment, size);
    if (got == nullptr)
        return ENOMEM;
    *memory = got;
    return 0;
}

void free(void *memory) noexcept {
    if (memory != nullptr)
        --out;
    __libc_free(memory);
}
}
