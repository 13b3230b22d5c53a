// A light device in a test: one bound UDP socket; and what sends to such a one.
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

    // The next datagram, or nothing when none came within `patience`.
    std::optional<Datagram> next(std::chrono::milliseconds patience = std::chrono::seconds(10));

    // When the last one that next() gave reached the socket, whenever that was read. By the
    // system's own clock, which may be set meanwhile.
    using Arrival = std::chrono::system_clock::time_point;
    Arrival arrival() const { return lastArrival; }

    // Throws away everything that has arrived.
    void drain();

    // The port bound to.
    int port() const { return boundPort; }

private:
    int fd = -1;
    int boundPort = 0;
    Arrival lastArrival;
};

// Sends one datagram from a socket of its own; throws std::runtime_error when that fails.
void sendTo(const std::string &ip, int port, const Datagram &bytes);

} // namespace test
