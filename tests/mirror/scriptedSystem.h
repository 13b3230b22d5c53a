// rand(), srand() and nanosleep() that replace the C library's for the whole test program, so that
// a test sees every draw and steps through a mode from sleep to sleep. Without a hook they behave
// like the system's.
#pragma once

#include <chrono>
#include <functional>
#include <mutex>
#include <vector>

namespace test {

// Records the calls made while it exists; at most one object at a time. The hooks run on the thread
// that draws or sleeps.
class ScriptedSystem {
public:
    ScriptedSystem();
    ~ScriptedSystem();
    ScriptedSystem(const ScriptedSystem &) = delete;
    ScriptedSystem &operator=(const ScriptedSystem &) = delete;

    std::function<int()> draw;     // in place of rand(); none: the system's own numbers
    std::function<void()> atSleep; // in place of each sleep; none: sleeps

    // In order. Read them only on the scripted thread, or after it has ended.
    std::mutex mutex;
    std::vector<unsigned> seeds;
    std::vector<int> draws;
    std::vector<std::chrono::nanoseconds> sleeps;
};

} // namespace test
