// The system's rand(), srand() and nanosleep(), standing before the C library's for the whole test
// program, so that a test sees every draw and steps through a mode from sleep to sleep. Without a
// hook they do what the system's do.
#pragma once

#include <chrono>
#include <functional>
#include <mutex>
#include <vector>

namespace test {

// What was asked of the system while one of these exists; one at a time. The hooks run on the
// thread that draws or sleeps.
class ScriptedSystem {
public:
    ScriptedSystem();
    ~ScriptedSystem();
    ScriptedSystem(const ScriptedSystem &) = delete;
    ScriptedSystem &operator=(const ScriptedSystem &) = delete;

    std::function<int()> draw;     // in place of rand(); none: the system's own numbers
    std::function<void()> atSleep; // in place of each sleep; none: sleeps

    // In order. Only to be looked at by the thread that is being scripted, or after it has ended.
    std::mutex mutex;
    std::vector<unsigned> seeds;
    std::vector<int> draws;
    std::vector<std::chrono::nanoseconds> sleeps;
};

} // namespace test
