// How much processor time a program takes that looks at a screen: its own, and what it adds to the
// X server's. The screen is a virtual one on which this process draws.
#pragma once

#include "tests/support/virtualScreen.h"

#include <atomic>
#include <functional>
#include <string>
#include <sys/types.h>
#include <thread>
#include <vector>

namespace bench {

constexpr int framesPerSecond = 33;

enum class Motion {
    Still,
    Part,  // a square of 64 pixels that wanders
    Whole, // every pixel, every time
};

// Draws 33 times a second, on a thread of its own, as long as it lives.
class Painter {
public:
    Painter(test::VirtualScreen &screen, Motion motion);
    ~Painter();
    Painter(const Painter &) = delete;
    Painter &operator=(const Painter &) = delete;

private:
    std::atomic<bool> done = false;
    std::thread thread;
};

// Somebody who looks at the screen: work in a child process, or a program. Neither: nobody.
struct Watcher {
    std::string name;
    // Runs in the child, with DISPLAY set, until the child is ended. Counts its frames.
    std::function<void(std::atomic<long> &frames)> work;
    // Lines such as "frame=12" on its standard output count its frames.
    std::vector<std::string> command;
};

struct Load {
    double own = 0;    // processor time in seconds per second
    double server = 0; // the same, with the drawing in it
    double frames = 0; // per second; 0 when the watcher does not count
};

Load measureLoad(test::VirtualScreen &screen, Motion motion, const Watcher &watcher,
                 double seconds);

// The total load of each watcher with the drawing taken off, in seconds per second, median of
// `rounds`; all watchers take turns. And their frames per second; the drawing's when not counted.
struct NetLoad {
    double total = 0;
    double frames = 0;
    double millisecondsPerFrame() const { return frames > 0 ? total / frames * 1000 : 0; }
};
std::vector<NetLoad> measureInTurns(test::VirtualScreen &screen, Motion motion,
                                    const std::vector<Watcher> &watchers, int rounds,
                                    double seconds);

} // namespace bench
