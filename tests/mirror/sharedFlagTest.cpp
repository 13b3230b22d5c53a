// Always built with full optimisation, whatever the rest is built with.
#include "mirror/sharedFlag.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>

namespace {

// The loop calls nothing that could change the flag.
TEST(SharedFlag, IsReadInEveryTurnOfALoop) {
    bool flag = true;
    std::atomic<bool> begun = false;
    std::thread loop([&] {
        volatile int turns = 0; // gives the loop an effect, but not on the flag
        begun = true;
        while (readFlag(flag))
            turns = turns + 1;
    });
    while (!begun)
        std::this_thread::yield();
    for (int i = 0; i < 1000; ++i)
        std::this_thread::yield();
    writeFlag(flag, false);
    loop.join();
}

} // namespace
