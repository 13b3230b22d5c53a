// Runs a mirror mode as the run loop does, over the stand-in platform, and times single cycles. The
// benchmark replaces nanosleep(), so that its own code runs between the mode's cycles instead of
// the mode's sleep.
#pragma once

#include "bench/measure.h"
#include "bench/scene.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace bench {

using Datagram = std::vector<char>;
using Datagrams = std::vector<Datagram>;

// The receiver for all devices: stores the datagrams of a cycle and can send them again with plain
// system calls, from one socket per device, as the mode does.
class Loopback {
public:
    explicit Loopback(int devices);
    ~Loopback();
    Loopback(const Loopback &) = delete;
    Loopback &operator=(const Loopback &) = delete;

    int port() const { return receiverPort; }
    Datagrams receiveAll();
    void send(std::size_t device, const Datagram &datagram);

private:
    int receiver = -1;
    int receiverPort = 0;
    std::vector<int> senders;
};

struct CycleTask {
    int mode = 0; // as in a configuration
    int panels = 1;
    int devices = 1;
    int cycles = 1;
    // Called before each cycle and each floor: writes the cycle's picture to the frame buffer.
    std::function<void(int cycle)> prepare;
    // The minimum work for the same datagrams: what every mode must do, and plain sends.
    std::function<void(Loopback &loopback, const Datagrams &sent)> floor;
};

struct CycleTimes {
    double mode = 0; // microseconds, median
    double floor = 0;
    double ratio() const { return mode / floor; }
};

CycleTimes measureCycles(const ScreenSize &size, const CycleTask &task);

} // namespace bench
