// A real-time clock that jumps. The machine's clock is not changed: this program replaces the clock
// functions for itself and for the library in it.
#include "tests/faults/faultRun.h"

#include <atomic>
#include <cerrno>
#include <ctime>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

std::atomic<long> shift = 0; // seconds
std::atomic<int> asked = 0;

int realtime(timespec *now) {
    ++asked;
    const int result = static_cast<int>(syscall(SYS_clock_gettime, CLOCK_REALTIME, now));
    now->tv_sec += shift;
    return result;
}

} // namespace

extern "C" {

int clock_gettime(clockid_t clock, timespec *now) noexcept {
    if (clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE)
        return realtime(now);
    return static_cast<int>(syscall(SYS_clock_gettime, clock, now));
}

int gettimeofday(timeval *__restrict now, void *__restrict) noexcept {
    timespec precise{};
    const int result = realtime(&precise);
    *now = {precise.tv_sec, precise.tv_nsec / 1000};
    return result;
}

std::time_t time(std::time_t *where) noexcept {
    timespec now{};
    realtime(&now);
    if (where != nullptr)
        *where = now.tv_sec;
    return now.tv_sec;
}
}

namespace {

using namespace std::chrono_literals;
using Steady = std::chrono::steady_clock;

class ClockJump : public test::FaultRun {
protected:
    void TearDown() override {
        FaultRun::TearDown();
        shift = 0;
    }
};

TEST_F(ClockJump, IsNotNoticed) {
    constexpr long year = 365 * 86400;
    screen.fill(0xff0000);
    start();
    ASSERT_TRUE(showsPlain(0xff0000));
    std::uint32_t colour = 0x010101;
    for (const long jump : {year, -year, 1l, -1l, 40 * year, -50 * year, 3600l, -3600l}) {
        const auto wall = std::chrono::system_clock::now();
        shift += jump;
        EXPECT_GT(std::chrono::abs(std::chrono::system_clock::now() - wall), 900ms);
        // No burst and no pause: one datagram per 42 ms of sleep, or fewer on a busy machine.
        const auto before = Steady::now();
        receiver.drain();
        for (int i = 0; i < 10; ++i)
            ASSERT_TRUE(receiver.next(2000ms)) << jump;
        EXPECT_GE(Steady::now() - before, 9 * 42ms) << jump;
        EXPECT_LT(Steady::now() - before, 3s) << jump;

        screen.fill(colour);
        EXPECT_TRUE(showsPlain(colour)) << jump;
        colour += 0x131517;
        EXPECT_EQ(captureCurrentStreamFrames(), 0) << jump;
    }
}

// A capture without a run times out after its usual time, and a stop does not wait.
TEST_F(ClockJump, WaitsKeepTheirLength) {
    for (const long jump : {-86400l, 86400l}) {
        shift = 0;
        std::atomic<bool> over = false;
        std::thread jumper([&] {
            while (!over) {
                shift += jump;
                usleep(1000);
            }
        });
        const auto before = Steady::now();
        EXPECT_EQ(captureCurrentStreamFrames(), -1);
        const auto waited = Steady::now() - before;
        EXPECT_GE(waited, 1010ms);
        EXPECT_LT(waited, 5s);
        for (int round = 0; round < 10; ++round) {
            EXPECT_EQ(configure(document(round % 4)), 1);
            EXPECT_EQ(startMirror(), 1);
            const auto beforeStop = Steady::now();
            EXPECT_EQ(stopMirror(), 1);
            EXPECT_LT(Steady::now() - beforeStop, 2s);
        }
        over = true;
        jumper.join();
    }
    EXPECT_GT(asked, 0);
}

// The seed is the time in seconds; a time before 1970 is valid too.
TEST_F(ClockJump, SeedsMayBeAnything) {
    for (const long jump : {-100l * 365 * 86400, 1000l * 365 * 86400}) {
        shift = jump;
        screen.fill(0xff0000);
        ASSERT_EQ(configure(document(1)), 1);
        asked = 0;
        ASSERT_EQ(startMirror(), 1);
        const auto melted = receiver.next();
        EXPECT_GT(asked, 0);
        ASSERT_TRUE(melted);
        ASSERT_EQ(melted->size(), 8u);
        EXPECT_GE(melted->at(7), 2);
        EXPECT_LE(melted->at(7), 10);
        EXPECT_EQ(stopMirror(), 1);
    }
}

} // namespace
