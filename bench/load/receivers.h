// The devices of a wall under load, one socket each, and what they have received.
//
// One thread uses it at a time.
#pragma once

#include "bench/load/histogram.h"
#include "bench/load/sharedSendState.h"

#include <chrono>
#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace load {

struct Receiver {
    int fd = -1;
    std::uint64_t received = 0;
    std::uint64_t chain = 0;
    std::int64_t arrival = 0;        // of the last datagram, in nanoseconds of the kernel's clock
    std::vector<std::int64_t> steps; // the last of each panel
};

// The number of frames (a datagram for every device) that show one step of the screen, two, or
// more. A frame can show several, since it may be replaced while a mode reads it.
struct FrameCounts {
    std::uint64_t whole = 0;
    std::uint64_t ofTwo = 0;
    std::uint64_t ofMore = 0;
};

class Receivers {
public:
    // Binds; throws std::runtime_error when that fails.
    Receivers(int devices, int panels);
    ~Receivers();
    Receivers(const Receivers &) = delete;
    Receivers &operator=(const Receivers &) = delete;

    // Starts again with nothing received.
    void forget();

    // Receives all pending datagrams; if there are none, waits for `patience` at most.
    void receive(std::chrono::milliseconds patience);

    // Starts to record intervals.
    void keepIntervals();

    // The number of datagrams at the device that has received the fewest.
    std::uint64_t frames() const;

    // Whether every panel's last colour is that of this step.
    bool allShow(std::int64_t step) const;

    // The number of datagrams that the kernel reports as dropped.
    std::uint64_t dropped(int device) const;

    const std::vector<Receiver> &all() const { return receivers; }
    const Histogram &intervals() const { return between; }
    const FrameCounts &frameCounts() const { return counts; }
    std::uint64_t mixtures() const { return mixed; }

    // The fault of the first datagram that is malformed or goes back; empty if there is none.
    const std::string &fault() const { return firstFault; }

private:
    struct Span {
        std::int64_t least = 0;
        std::int64_t most = 0;
        int datagrams = 0;
    };

    void take(std::size_t device, const unsigned char *bytes, std::size_t length,
              std::int64_t arrival);
    std::string read(std::size_t device, const unsigned char *bytes, std::size_t length,
                     Span &span);
    void add(std::uint64_t frame, const Span &span);

    const int panels;
    int poller = -1;
    std::vector<Receiver> receivers;
    bool keeping = false;
    Histogram between;
    FrameCounts counts;
    std::uint64_t mixed = 0;
    std::deque<Span> spans; // of the frames that not every device has received
    std::uint64_t firstSpan = 0;
    std::string firstFault;
};

} // namespace load
