#include "tests/mirror/failingAllocation.h"

#include <cstdlib>
#include <new>

namespace {

thread_local int untilFailure = 0; // 0: none is due

void *allocate(std::size_t size) noexcept {
    if (untilFailure > 0 && --untilFailure == 0)
        return nullptr;
    return std::malloc(size > 0 ? size : 1);
}

void *allocateOrThrow(std::size_t size) {
    void *memory = allocate(size);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

} // namespace

namespace test {

FailingAllocation::FailingAllocation(int nth) {
    untilFailure = nth;
}

FailingAllocation::~FailingAllocation() {
    untilFailure = 0;
}

bool FailingAllocation::happened() const {
    return untilFailure == 0;
}

} // namespace test

// All variants are replaced: a sanitizer would supply the missing ones and report a mismatch.
void *operator new(std::size_t size) {
    return allocateOrThrow(size);
}
void *operator new[](std::size_t size) {
    return allocateOrThrow(size);
}
void *operator new(std::size_t size, const std::nothrow_t &) noexcept {
    return allocate(size);
}
void *operator new[](std::size_t size, const std::nothrow_t &) noexcept {
    return allocate(size);
}
void operator delete(void *memory) noexcept {
    std::free(memory);
}
void operator delete[](void *memory) noexcept {
    std::free(memory);
}
void operator delete(void *memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void *memory, std::size_t) noexcept {
    std::free(memory);
}
