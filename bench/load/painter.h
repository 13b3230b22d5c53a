// Fills the whole screen with the colour of one step after the other.
#pragma once

#include "bench/load/stepColour.h"
#include "bench/measure.h"
#include "tests/support/virtualScreen.h"

#include <atomic>
#include <thread>

namespace load {

class Painter {
public:
    // The screen must show step 0 already, and nothing else may draw on it meanwhile.
    Painter(test::VirtualScreen &screen, double drawTime)
        : thread([this, &screen, drawTime] {
              while (!done) {
                  const auto begin = bench::Clock::now();
                  screen.fill(colourOf(step + 1));
                  ++step;
                  bench::sleepUntil(begin + std::chrono::duration_cast<bench::Clock::duration>(
                                                std::chrono::duration<double>(drawTime)));
              }
          }) {}
    ~Painter() { stop(); }
    Painter(const Painter &) = delete;
    Painter &operator=(const Painter &) = delete;

    // Returns the last step, which stays on the screen.
    std::int64_t stop() {
        done = true;
        if (thread.joinable())
            thread.join();
        return step;
    }

private:
    std::atomic<bool> done = false;
    std::int64_t step = 0; // belongs to the thread until it has ended
    std::thread thread;
};

} // namespace load
