// Sends recorded datagrams to the devices that they were recorded for.
#pragma once

#include "tools/lights/address.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace panelwall {

using lights::Endpoint;

// Owns its sockets, one per address family in use. One thread at a time.
class Sender {
public:
    Sender() = default;
    ~Sender();
    Sender(const Sender &) = delete;
    Sender &operator=(const Sender &) = delete;

    // The devices' endpoints, in order. Returns the reason when no socket can be opened, else
    // nothing. Called once.
    std::string open(std::vector<Endpoint> endpoints_);

    // Sends one datagram to device number `device`, waiting for room in the socket's queue. One
    // that cannot be sent is counted.
    void send(std::size_t device, std::span<const std::uint8_t> bytes);

    std::uint64_t sent() const { return sentCount; }
    std::uint64_t failed() const { return failedCount; }
    const std::string &lastFailure() const { return failure; } // in words

private:
    int socketOf(const Endpoint &endpoint) const;

    std::vector<Endpoint> endpoints;
    int four = -1;
    int six = -1;
    std::uint64_t sentCount = 0;
    std::uint64_t failedCount = 0;
    std::string failure;
};

} // namespace panelwall
