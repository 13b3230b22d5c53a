// A run of the library around which things go wrong, seen as its lights see it.
#pragma once

#include "mirror/mirrorInterface.h"
#include "tests/endToEnd/lightSetup.h"
#include "tests/support/virtualScreen.h"

#include <chrono>
#include <cstddef>
#include <gtest/gtest.h>
#include <string>
#include <vector>

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

class FaultRun : public testing::Test {
protected:
    void TearDown() override { stopMirror(); }

    static int configure(std::string text) { return setMirrorConfig(text.data()); }
    // The configuration of the one light, for the display that is listed first.
    std::string document(int mode = 0) const;

    // Configures and starts in match mode.
    void start();

    // Waits until the light shows this colour, which the whole screen must have.
    testing::AssertionResult showsPlain(std::uint32_t colour);
    // The datagram of a screen of this colour.
    Datagram plainDatagram(std::uint32_t colour) const;

    LightSetup light{"127.0.62.1", 1, 0, 0.2, {{1, 40, 40}}};
    LightReceiver receiver{"127.0.62.1", 60221};
};

} // namespace test
