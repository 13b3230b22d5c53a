// Memory whose second half holds up the thread that touches it.
#pragma once

#include <cstddef>

namespace test {

// One at a time; one thread at a time is held. Handles SIGSEGV meanwhile.
class HeldMemory {
public:
    explicit HeldMemory(std::size_t bytes); // zeroed; pages, twice a whole number of them
    ~HeldMemory();
    HeldMemory(const HeldMemory &) = delete;
    HeldMemory &operator=(const HeldMemory &) = delete;

    unsigned char *bytes() const { return base; }

    void holdReaders() const;
    void holdWriters() const;
    void open() const; // nobody is held from now on; who is, stays

    // Waits until a thread is held.
    void awaitSomebody();
    // Opens the memory and lets the thread go on that is held, if there is one.
    void letGo();

private:
    static void hold(int);

    unsigned char *base;
    std::size_t size;
};

} // namespace test
