#include "tests/endToEnd/heldSleep.h"

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <time.h>

namespace test {

namespace {

// Melt mode's pause. Fade mode's is longer; all other sleeps during these modes are shorter.
constexpr auto shortestHeld = std::chrono::milliseconds(99);
constexpr auto patience = std::chrono::seconds(10);

std::mutex mutex;
std::condition_variable changed;
bool holds = false;
bool sleeps = false;

// Holds the calling thread if sleeps are held; false if it must sleep for the requested time.
bool holdsThis() {
    std::unique_lock lock(mutex);
    if (!holds)
        return false;
    sleeps = true;
    changed.notify_all();
    changed.wait(lock, [] { return !sleeps || !holds; });
    return true;
}

} // namespace

HeldSleep::HeldSleep() {
    const std::lock_guard lock(mutex);
    holds = true;
    sleeps = false;
}

HeldSleep::~HeldSleep() {
    const std::lock_guard lock(mutex);
    holds = false;
    changed.notify_all();
}

bool HeldSleep::awaitNext() {
    std::unique_lock lock(mutex);
    sleeps = false;
    changed.notify_all();
    return changed.wait_for(lock, patience, [] { return sleeps; });
}

} // namespace test

// Replaces the C library's function for the whole program, including the library.
extern "C" int nanosleep(const timespec *wanted, timespec *rest) {
    const auto time =
        std::chrono::seconds(wanted->tv_sec) + std::chrono::nanoseconds(wanted->tv_nsec);
    if (time >= test::shortestHeld && test::holdsThis())
        return 0;
    const int error = clock_nanosleep(CLOCK_MONOTONIC, 0, wanted, rest);
    errno = error == 0 ? errno : error;
    return error == 0 ? 0 : -1;
}
