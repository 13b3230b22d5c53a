// The parameters of a load test.
#pragma once

#include <cstdint>

namespace load {

struct Plan {
    int devices = 1000;
    int panels = 100; // of each device
    int width = 3840;
    int height = 2160;
    double seconds = 600;
    std::uint64_t frames = 0;       // ends the run after this number for each device; 0: never
    int frameDelay = 42;            // milliseconds after each frame
    double minimumFrameTime = 0.03; // seconds between frames of the stream
    double drawTime = 0.03;         // seconds between drawings of the whole screen
    unsigned descriptors = 1024;    // the host's limit
};

} // namespace load
