// A thread on the second processor that rewrites a frame, as a capture does while the mirroring
// thread runs on the first processor. The pixels are then in the other processor's cache.
#pragma once

#include "bench/measure.h"

#include <condition_variable>
#include <cstring>
#include <mutex>
#include <thread>

namespace bench {

class OtherCore {
public:
    // Pins the calling thread to the first processor.
    OtherCore() : thread([this] { run(); }) { stayOn(0); }
    ~OtherCore() {
        post(nullptr, nullptr, 0);
        thread.join();
    }
    OtherCore(const OtherCore &) = delete;
    OtherCore &operator=(const OtherCore &) = delete;

    // Returns when the frame has been rewritten.
    void rewrite(void *frame, const void *picture, std::size_t bytes) {
        post(frame, picture, bytes);
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return !waiting; });
    }

private:
    void post(void *frame, const void *picture, std::size_t bytes) {
        const std::lock_guard lock(mutex);
        target = frame;
        source = picture;
        length = bytes;
        waiting = true;
        changed.notify_all();
    }

    void run() {
        stayOn(1);
        for (;;) {
            std::unique_lock lock(mutex);
            changed.wait(lock, [this] { return waiting; });
            if (target == nullptr)
                return;
            std::memcpy(target, source, length);
            waiting = false;
            changed.notify_all();
        }
    }

    std::mutex mutex;
    std::condition_variable changed;
    void *target = nullptr;
    const void *source = nullptr;
    std::size_t length = 0;
    bool waiting = false;
    std::thread thread;
};

} // namespace bench
