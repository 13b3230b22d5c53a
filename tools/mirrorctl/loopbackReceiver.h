// Makes this process a light device: a socket on an unused loopback address.
#pragma once

#include "tools/config/configDocument.h"

#include <optional>
#include <string>
#include <vector>

namespace mirrorctl {

// Used by one thread.
class LoopbackReceiver {
public:
    // Binds to a free address that no device of the document has; reason() says why there is none.
    explicit LoopbackReceiver(const config::Document &document);
    ~LoopbackReceiver();
    LoopbackReceiver(const LoopbackReceiver &) = delete;
    LoopbackReceiver &operator=(const LoopbackReceiver &) = delete;

    const std::string &reason() const { return why; } // empty: there is an address

    // Readable when there is a datagram; -1 when there is no address.
    int descriptor() const { return fd; }

    // The address and its control version, without panels.
    const config::DeviceEntry &device() const { return own; }

    struct Datagram {
        std::vector<unsigned char> bytes; // the first 1024
        double time = 0.0;                // when the kernel received it: wall clock, seconds
    };

    // The next datagram, without waiting; nothing when there is none.
    std::optional<Datagram> next();

private:
    config::DeviceEntry own;
    int fd = -1;
    std::string why;
};

} // namespace mirrorctl
