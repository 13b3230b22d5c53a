#include "tools/panelwall/sender.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace panelwall {

Sender::~Sender() {
    for (const int fd : {four, six})
        if (fd >= 0)
            close(fd);
}

int Sender::socketOf(const Endpoint &endpoint) const {
    return endpoint.address.ss_family == AF_INET ? four : six;
}

std::string Sender::open(std::vector<Endpoint> endpoints_) {
    endpoints = std::move(endpoints_);
    for (const Endpoint &endpoint : endpoints) {
        if (socketOf(endpoint) >= 0)
            continue;
        const int fd = socket(endpoint.address.ss_family, SOCK_DGRAM, 0);
        if (fd < 0)
            // NOLINTNEXTLINE(concurrency-mt-unsafe): the text is constant or the thread's own
            return std::strerror(errno);
        fcntl(fd, F_SETFD, FD_CLOEXEC);
        (endpoint.address.ss_family == AF_INET ? four : six) = fd;
    }
    return {};
}

void Sender::send(std::size_t device, std::span<const std::uint8_t> bytes) {
    const Endpoint &endpoint = endpoints.at(device);
    ssize_t size;
    do
        size = sendto(socketOf(endpoint), bytes.data(), bytes.size(), 0,
                      reinterpret_cast<const sockaddr *>(&endpoint.address), endpoint.length);
    while (size < 0 && errno == EINTR);
    if (size >= 0) {
        ++sentCount;
        return;
    }
    ++failedCount;
    // NOLINTNEXTLINE(concurrency-mt-unsafe): the text is constant or the thread's own
    failure = std::strerror(errno);
}

} // namespace panelwall
