// The C library's memory for the whole test program, counted, and refused when a test says so.
#pragma once

#include <cstddef>

namespace test {

// While one of these exists, the nth request, counted from 1, is refused, and with `forGood` all
// that follow it as well. One at a time.
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

// Pieces of memory that are handed out at the moment.
long piecesOut();

} // namespace test
