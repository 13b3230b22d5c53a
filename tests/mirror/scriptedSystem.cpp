#include "tests/mirror/scriptedSystem.h"

#include <atomic>
#include <cstdlib>
#include <time.h>

namespace test {

namespace {
std::atomic<ScriptedSystem *> current = nullptr;
}

ScriptedSystem::ScriptedSystem() {
    current = this;
}

ScriptedSystem::~ScriptedSystem() {
    current = nullptr;
}

} // namespace test

extern "C" {

// rand() and random() share one generator in the C library.
int rand() noexcept {
    test::ScriptedSystem *script = test::current;
    if (script == nullptr)
        return static_cast<int>(random());
    const int drawn = script->draw ? script->draw() : static_cast<int>(random());
    const std::lock_guard lock(script->mutex);
    script->draws.push_back(drawn);
    return drawn;
}

void srand(unsigned seed) noexcept {
    if (test::ScriptedSystem *script = test::current) {
        const std::lock_guard lock(script->mutex);
        script->seeds.push_back(seed);
    }
    srandom(seed);
}

int nanosleep(const timespec *wanted, timespec *) {
    test::ScriptedSystem *script = test::current;
    if (script != nullptr) {
        const std::lock_guard lock(script->mutex);
        script->sleeps.push_back(std::chrono::seconds(wanted->tv_sec) +
                                 std::chrono::nanoseconds(wanted->tv_nsec));
    }
    if (script != nullptr && script->atSleep)
        script->atSleep();
    else
        clock_nanosleep(CLOCK_MONOTONIC, 0, wanted, nullptr);
    return 0;
}
}
