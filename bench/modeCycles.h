// Runs a mirror mode as the run loop does, over the stand-in platform, and stops the time of single
// cycles: the program's nanosleep() is this benchmark's, so that it has the floor between the
// mode's cycles instead of the mode's sleep.
#pragma once

#include "bench/measure.h"
#include "bench/scene.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace bench {

using Datagram = std::vector<char>;
using Datagrams = std::vector<Datagram>;

// The far end of all devices: keeps what a cycle sent, and can send the same once more, bare, from
// a socket a device, as the mode does.
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
    // Before each cycle and before each floor: puts the picture of the cycle into the frame buffer.
    std::function<void(int cycle)> prepare;
    // The least that leads to the same datagrams: what no mode can do without, and bare sends.
    std::function<void(Loopback &loopback, const Datagrams &sent)> floor;
};

struct CycleTimes {
    double mode = 0; // microseconds, median
    double floor = 0;
    double ratio() const { return mode / floor; }
};

CycleTimes measureCycles(const ScreenSize &size, const CycleTask &task);

} // namespace bench
