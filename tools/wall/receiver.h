// Receives the wall's datagrams: one bound UDP socket per device.
#pragma once

#include "tools/config/configDocument.h"
#include "tools/wall/clock.h"
#include "tools/wall/deviceEndpoints.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace panelwall {

// Owns its sockets. One thread at a time.
class Receiver {
public:
    Receiver() = default;
    ~Receiver();
    Receiver(const Receiver &) = delete;
    Receiver &operator=(const Receiver &) = delete;

    // Opens and binds a socket for every device; `endpoints` are the document's. Returns what went
    // wrong, a problem for every device whose socket could not be bound. Called once.
    std::vector<config::Problem> open(const config::Document &document,
                                      const std::vector<Endpoint> &endpoints);

    // Called with the device's index, the whole datagram, which is valid during the call only, and
    // the time at which it arrived, which for one device never goes back.
    using Handler =
        std::function<void(std::size_t, std::span<const std::uint8_t>, Clock::time_point)>;

    // The sockets to wait for, one per device, in order; they stay the receiver's.
    std::vector<int> fds() const;

    // Hands over everything that has arrived, oldest first for each device, and does not wait.
    // Under a flood it returns after some thousand datagrams per device. True when anything came.
    bool readAll(const Handler &handler);

private:
    struct Socket {
        int fd;
        Clock::time_point lastArrival;
    };

    std::vector<Socket> sockets;
    std::vector<std::uint8_t> buffer;
};

} // namespace panelwall
