// Counting the frames that the library sends, without asking it.
#pragma once

#include "tools/mirrorctl/loopbackReceiver.h"

#include <cstddef>
#include <deque>
#include <optional>
#include <string>

namespace mirrorctl {

// How many frames were sent, and how evenly. Fed with the time of each, in seconds of any clock.
class FrameTally {
public:
    void add(double time);

    // The interval from here to the next frame says nothing of their pace.
    void pause() { last.reset(); }

    std::size_t frames() const { return count; }

    // The time of the last one; 0 before the first, and before the first after a pause.
    double lastTime() const { return last.value_or(0.0); }

    // Frames a second, and the standard deviation of the intervals between them in seconds: of the
    // last seconds, or of all. Nothing with fewer than three frames.
    struct Pace {
        double rate = 0.0;
        double jitter = 0.0;
    };
    std::optional<Pace> recentPace() const;
    std::optional<Pace> wholePace() const { return whole.pace(); }

private:
    struct Sums {
        std::size_t intervals = 0;
        double mean = 0.0;
        double squares = 0.0; // of the distances from the mean
        void add(double interval);
        std::optional<Pace> pace() const;
    };

    std::size_t count = 0;
    std::optional<double> last;
    Sums whole;
    std::deque<double> recent; // the last intervals
};

// The library has no counter, and asking it for its frames makes it write them out as text. But it
// sends every device a datagram per frame, in order. So the document that it is handed has one
// device more than the user's, the last: this process, on loopback. In match, melt and fade mode it
// has no panels, is told so in two bytes after all lights have been served, and every such datagram
// is one frame. In palette mode, which sends a device only what is due on one of its panels, it has
// one panel, and a datagram is no more than a sign of life.
//
// One thread.
class FrameCounter {
public:
    explicit FrameCounter(const config::Document &document);

    // Why there is no loopback address to count at; empty when there is one.
    const std::string &reason() const { return receiver.reason(); }

    // What the library is handed as the document's last device.
    const config::DeviceEntry &device() const { return own; }

    // Takes in what has arrived, without waiting.
    void read();

    // By the time at which the kernel received each datagram.
    FrameTally &tally() { return frames; }

private:
    LoopbackReceiver receiver;
    config::DeviceEntry own;
    FrameTally frames;
};

} // namespace mirrorctl
