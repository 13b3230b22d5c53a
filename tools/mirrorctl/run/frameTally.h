// How many frames were sent, and how evenly.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>

namespace mirrorctl {

// Fed with the time of each frame, in seconds of any clock; one thread.
class FrameTally {
public:
    void add(double time);

    // Frames are held up from here until the next one: that interval says nothing of their pace.
    void pause() { isFirst = true; }

    std::size_t frames() const { return count; }

    // The time of the last one; 0 before the first.
    double lastTime() const { return last; }

    // Of the frames within the last seconds, or of all: frames a second, and the standard deviation
    // of the intervals between them in seconds. Nothing with fewer than three frames.
    struct Pace {
        double rate = 0.0;
        double jitter = 0.0;
    };
    std::optional<Pace> recentPace() const;
    std::optional<Pace> wholePace() const;

private:
    // Sums over intervals, from which mean and deviation follow.
    struct Sums {
        std::size_t intervals = 0;
        double mean = 0.0;
        double squares = 0.0; // of the distances from the mean
        void add(double interval);
        std::optional<Pace> pace() const;
    };

    std::size_t count = 0;
    bool isFirst = true; // the next frame is the first, or the first after a pause
    double last = 0.0;
    Sums whole;
    std::deque<double> recent; // the last intervals
};

} // namespace mirrorctl
