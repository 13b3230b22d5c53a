// Counts the frames that the library sends, without asking the library.
#pragma once

#include "tools/mirrorctl/loopbackReceiver.h"

#include <cstddef>
#include <deque>
#include <optional>
#include <string>

namespace mirrorctl {

// Counts frames and measures how evenly they are sent, from their times in seconds of any clock.
class FrameTally {
public:
    void add(double time);

    // Excludes the interval from here to the next frame from the pace.
    void pause() { last.reset(); }

    std::size_t frames() const { return count; }

    // The last frame's time; 0 before the first frame, and after a pause until the next one.
    double lastTime() const { return last.value_or(0.0); }

    // Frames per second and the standard deviation of the intervals between them, in seconds: of
    // the last intervals or of all. Nothing with fewer than two intervals.
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
        double squares = 0.0; // sum of the squared distances from the mean
        void add(double interval);
        std::optional<Pace> pace() const;
    };

    std::size_t count = 0;
    std::optional<double> last;
    Sums whole;
    std::deque<double> recent; // the last intervals
};

// The library has no frame counter, and asking it for its frames makes it write them out as text.
// But it sends every device one datagram per frame, in order. So the document passed to the library
// has one more device at the end: this process, on loopback. In match, melt and fade mode it has no
// panels and gets a datagram without records after all lights have been sent theirs; each one
// counts as a frame. Palette mode sends to a device only when one of its panels is due, so there it
// has one panel, and a datagram is only a sign of life.
//
// Used by one thread.
class FrameCounter {
public:
    explicit FrameCounter(const config::Document &document);

    // Why there is no loopback address to count at; empty when there is one.
    const std::string &reason() const { return receiver.reason(); }

    // The device to add at the end of the document.
    const config::DeviceEntry &device() const { return own; }

    // Reads the datagrams that have arrived, without waiting.
    void read();

    // Its times are those at which the kernel received the datagrams.
    FrameTally &tally() { return frames; }

private:
    LoopbackReceiver receiver;
    config::DeviceEntry own;
    FrameTally frames;
};

} // namespace mirrorctl
