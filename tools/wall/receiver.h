// Receives the wall's datagrams: one bound UDP socket per device, no two with one address.
#pragma once

#include "tools/config/configDocument.h"
#include "tools/lights/address.h"
#include "tools/wall/clock.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace panelwall {

using lights::Endpoint;

// Which addresses will do: loopback (127.0.0.0/8 or ::1), or any.
enum class Reach { Loopback, Anywhere };

// The endpoint of every device, in order. Appends a problem for each device whose address does not
// parse, is out of reach, or has been taken with its port by a device before. The endpoints are
// complete exactly when no problem was found.
std::vector<Endpoint> findEndpoints(const config::Document &document,
                                    std::vector<config::Problem> &problems,
                                    Reach reach = Reach::Loopback);

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
    const std::vector<int> &fds() const { return sockets; }

    // Hands over everything that has arrived, oldest first for each device, and does not wait.
    // Under a flood it returns after some thousand datagrams per device. True when anything came.
    bool readAll(const Handler &handler);

private:
    std::vector<int> sockets;
    std::vector<Clock::time_point> lastArrivals; // for each socket
    std::vector<std::uint8_t> buffer;
};

} // namespace panelwall
