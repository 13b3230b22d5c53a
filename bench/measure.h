// Shared by the benchmarks: clocks, pace, medians, and results that the compiler must not discard.
#pragma once

#include <algorithm>
#include <chrono>
#include <cmath>
#include <ctime>
#include <sched.h>
#include <sys/types.h>
#include <vector>

namespace bench {

using Clock = std::chrono::steady_clock;

// Makes the compiler assume that `value`, and all memory reachable from it, is read.
template <class Value> void escape(const Value &value) {
    asm volatile("" : : "r"(&value) : "memory");
}

template <class Work> double microseconds(Work work) {
    const Clock::time_point begin = Clock::now();
    work();
    return std::chrono::duration<double, std::micro>(Clock::now() - begin).count();
}

inline double quantile(std::vector<double> values, double q) {
    std::sort(values.begin(), values.end());
    const double last = static_cast<double>(values.size() - 1);
    return values[static_cast<std::size_t>(std::lround(q * last))];
}

inline double median(const std::vector<double> &values) {
    return quantile(values, 0.5);
}

// Sleeps with the system call only, so that a benchmark can replace nanosleep() in the code that it
// measures.
inline void sleepUntil(Clock::time_point time) {
    const auto sinceEpoch =
        std::chrono::duration_cast<std::chrono::nanoseconds>(time.time_since_epoch()).count();
    const timespec until{sinceEpoch / 1'000'000'000, sinceEpoch % 1'000'000'000};
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr) != 0) {
    }
}

// Waits for equally spaced points in time.
class Pace {
public:
    explicit Pace(Clock::duration period) : period(period) {}

    void wait() {
        next += period;
        sleepUntil(next);
    }

private:
    const Clock::duration period;
    Clock::time_point next = Clock::now();
};

// The processor time that a process has used so far, in seconds; process 0 is this one.
inline double processorSeconds(pid_t process) {
    clockid_t clock = CLOCK_PROCESS_CPUTIME_ID;
    timespec time{};
    if (process != 0 && clock_getcpuclockid(process, &clock) != 0)
        return 0;
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

// Keeps the calling thread on one processor.
inline void stayOn(int processor) {
    cpu_set_t only;
    CPU_ZERO(&only);
    CPU_SET(processor, &only);
    sched_setaffinity(0, sizeof only, &only);
}

} // namespace bench
