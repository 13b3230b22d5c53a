// A light device for tests: one bound UDP socket; and a function that sends to such a device.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace test {

using Datagram = std::vector<std::uint8_t>;

class LightReceiver {
public:
    // Binds to `ip`:`port`; throws std::runtime_error when that fails.
    LightReceiver(const std::string &ip, int port);
    ~LightReceiver();
    LightReceiver(const LightReceiver &) = delete;
    LightReceiver &operator=(const LightReceiver &) = delete;

    // Receives what is sent to the multicast address that it is bound to, on the interface with
    // this address; throws std::runtime_error when that fails.
    void join(const std::string &interface);

    // The next datagram, or nothing if none arrives within `patience`.
    std::optional<Datagram> next(std::chrono::milliseconds patience = std::chrono::seconds(10));

    // When the last datagram that next() returned reached the socket. Uses the system clock, which
    // may be adjusted meanwhile.
    using Arrival = std::chrono::system_clock::time_point;
    Arrival arrival() const { return lastArrival; }

    // Discards everything that has arrived.
    void drain();

    // The bound port.
    int port() const { return boundPort; }

private:
    int fd = -1;
    int boundPort = 0;
    Arrival lastArrival;
};

// Sends one datagram from a new socket; throws std::runtime_error when that fails.
void sendTo(const std::string &ip, int port, const Datagram &bytes);

} // namespace test
