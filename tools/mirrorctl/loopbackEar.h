// This process as a light device: a socket on a loopback address that nobody else has.
#pragma once

#include "tools/config/configDocument.h"

#include <cstddef>
#include <string>

namespace mirrorctl {

// One thread.
class LoopbackEar {
public:
    // Takes a free address that is none of the document's devices. When there is none, isThere() is
    // false and reason() says why.
    explicit LoopbackEar(const config::Document &document);
    ~LoopbackEar();
    LoopbackEar(const LoopbackEar &) = delete;
    LoopbackEar &operator=(const LoopbackEar &) = delete;

    bool isThere() const { return fd >= 0; }
    const std::string &reason() const { return why; }

    // Readable when there is a datagram; -1 when it is not there.
    int descriptor() const { return fd; }

    const std::string &address() const { return ip; }
    int controlVersion() const { return version; }

    // One datagram, without waiting: its size (more than there is room for when it is longer than
    // that), and the wall clock's time in seconds at which the kernel received it. False when there
    // is none.
    bool next(unsigned char *bytes, std::size_t room, std::size_t &size, double &time);

private:
    std::string ip;
    int version = 0;
    int fd = -1;
    std::string why;
};

} // namespace mirrorctl
