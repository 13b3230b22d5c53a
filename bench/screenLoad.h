// Measures the processor time of a program that watches a screen: its own, and what it adds to the
// display server's. The screen is virtual, and this process draws on it.
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
    Part,  // a moving square of 64 x 64 pixels
    Whole, // every pixel, every time
};

// Draws 33 times a second on its own thread until it is destroyed.
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

// Watches the screen: `work` in a child process, or a program. If both are empty, there is no
// watcher.
struct Watcher {
    std::string name;
    // Runs in the child, with the server's variables set, until the child is killed. Counts its
    // frames.
    std::function<void(std::atomic<long> &frames)> work;
    // May report its frames on standard output, in lines such as "frame=12".
    std::vector<std::string> command;
};

struct Load {
    double own = 0;    // processor time in seconds per second
    double server = 0; // the same for the server, including the drawing
    double frames = 0; // per second; 0 when the watcher does not count
};

Load measureLoad(test::VirtualScreen &screen, Motion motion, const Watcher &watcher,
                 double seconds);

// The total load of each watcher without the drawing, in seconds per second, and its frames per
// second, or the drawing's if it does not count them. Medians of `rounds`, in which the watchers
// take turns.
struct NetLoad {
    double total = 0;
    double frames = 0;
    double millisecondsPerFrame() const { return frames > 0 ? total / frames * 1000 : 0; }
};
std::vector<NetLoad> measureInTurns(test::VirtualScreen &screen, Motion motion,
                                    const std::vector<Watcher> &watchers, int rounds,
                                    double seconds);

} // namespace bench
