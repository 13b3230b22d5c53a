// A run of the library around which things go wrong, seen as its lights see it.
#pragma once

#include "tests/endToEnd/lightSetup.h"
#include "tests/support/virtualScreen.h"

#include <cstddef>
#include <string>

namespace test {

// Whether the long versions are wanted.
bool fullFaults();

// Prints a line for the document of figures.
void tellFigure(const std::string &text);

// What a process must not gather while it uses the library.
struct Holdings {
    std::size_t descriptors;
    std::size_t threads;
    std::size_t heapBytes;     // handed out and not given back
    std::size_t residentBytes; // of the whole process
};
Holdings holdings();

// One light, and a screen that is green at first.
class FaultRun : public OneLightRun {
protected:
    explicit FaultRun(int width = 200, int height = 100)
        : OneLightRun("127.0.62.1"), screen(width, height) {
        screen.fill(0x00ff00);
    }

    UsedScreen screen;
};

} // namespace test
