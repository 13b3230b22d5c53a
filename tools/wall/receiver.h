// Receives the wall's datagrams on one bound UDP socket per device, each at its own address and
// port.
#pragma once

#include "tools/config/configDocument.h"
#include "tools/lights/address.h"
#include "tools/wall/clock.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace panelwall {

using lights::Endpoint;

// Which addresses are accepted: loopback (127.0.0.0/8 or ::1), or any.
enum class Reach { Loopback, Anywhere };

// Returns the endpoint of every device, in order. Appends a problem for each device whose address
// does not parse, is out of reach, or is used with the same port by an earlier device. The
// endpoints are complete exactly when no problem was found.
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

    // Opens and binds a socket for every device; `endpoints` are the document's. Returns a problem
    // for each device whose socket cannot be opened or bound. Called once.
    std::vector<config::Problem> open(const config::Document &document,
                                      const std::vector<Endpoint> &endpoints);

    // Called with the device's index, the whole datagram (valid only during the call) and its
    // arrival time, which never decreases for a device.
    using Handler =
        std::function<void(std::size_t, std::span<const std::uint8_t>, Clock::time_point)>;

    // The sockets to poll, one per device, in order; the receiver owns them.
    const std::vector<int> &fds() const { return sockets; }

    // Passes every datagram that has arrived to `handler`, oldest first for each device, without
    // waiting. In a flood it returns after a few thousand per device. True if there were any.
    bool readAll(const Handler &handler);

private:
    std::vector<int> sockets;
    std::vector<Clock::time_point> lastArrivals; // for each socket
    std::vector<std::uint8_t> buffer;
};

// How many datagrams a UDP socket of this process has lost so far because its receive queue was
// full; nullopt if the system does not report it.
std::optional<std::uint64_t> droppedDatagrams(int socket);

} // namespace panelwall
