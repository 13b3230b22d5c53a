// A condition variable whose deadlines are on the monotonic clock.
//
// std::condition_variable offers the same, but through a function that the thread sanitizer does
// not know.
#pragma once

#include "platform/objects/clock.h"

#include <cstdint>
#include <ctime>
#include <mutex>
#include <pthread.h>

namespace platform {

class MonotonicCondition {
public:
    MonotonicCondition() {
        pthread_condattr_t attributes;
        pthread_condattr_init(&attributes);
        pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
        pthread_cond_init(&condition, &attributes);
        pthread_condattr_destroy(&attributes);
    }
    ~MonotonicCondition() { pthread_cond_destroy(&condition); }
    MonotonicCondition(const MonotonicCondition &) = delete;
    MonotonicCondition &operator=(const MonotonicCondition &) = delete;

    void notifyAll() { pthread_cond_broadcast(&condition); }

    void wait(std::unique_lock<std::mutex> &lock) {
        pthread_cond_wait(&condition, lock.mutex()->native_handle());
    }

    // False when the deadline passed with `done()` still false.
    template <typename Predicate>
    bool waitUntil(std::unique_lock<std::mutex> &lock, Clock::time_point deadline, Predicate done) {
        const std::int64_t nanoseconds =
            std::chrono::duration_cast<std::chrono::nanoseconds>(deadline.time_since_epoch())
                .count();
        timespec until{};
        until.tv_sec = nanoseconds / 1'000'000'000;
        until.tv_nsec = nanoseconds % 1'000'000'000;
        while (!done())
            if (pthread_cond_timedwait(&condition, lock.mutex()->native_handle(), &until) != 0)
                return done();
        return true;
    }

private:
    pthread_cond_t condition;
};

} // namespace platform
