// The C library's allocation functions for the whole test program; they count allocations and
// refuse memory when a test requests it.
#pragma once

#include <cstddef>

namespace test {

// While a RefusedMemory exists, the nth request, counted from 1, is refused; with `forGood`, all
// later ones too. At most one object at a time.
class RefusedMemory {
public:
    enum class Who {
        ThisThread,
        OtherThreads,
    };

    RefusedMemory(Who who, int nth, bool forGood);
    ~RefusedMemory();
    RefusedMemory(const RefusedMemory &) = delete;
    RefusedMemory &operator=(const RefusedMemory &) = delete;

    // False while fewer than n requests have been made.
    static bool happened();
};

// The number of allocations not yet freed.
long piecesOut();

} // namespace test
