// A run of the library under faults, observed at its lights.
#pragma once

#include "tests/endToEnd/lightSetup.h"
#include "tests/support/virtualScreen.h"

#include <cstddef>
#include <string>

namespace test {

// Whether the long versions of the tests are requested.
bool fullFaults();

// Prints a measurement for docs/reliability.md.
void printMeasurement(const std::string &text);

// Resources whose use must not grow while a process uses the library.
struct ResourceUsage {
    std::size_t descriptors;
    std::size_t threads;
    std::size_t heapBytes;     // allocated and not freed
    std::size_t residentBytes; // of the whole process
};
ResourceUsage resourceUsage();

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
