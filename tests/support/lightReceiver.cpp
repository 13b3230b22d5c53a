#include "tests/support/lightReceiver.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace test {

LightReceiver::LightReceiver(const std::string &ip, int port) : boundPort(port) {
    sockaddr_storage address{};
    socklen_t length = sizeof(sockaddr_in);
    const bool six = ip.find(':') != std::string::npos;
    if (six) {
        auto *in6 = reinterpret_cast<sockaddr_in6 *>(&address);
        in6->sin6_family = AF_INET6;
        in6->sin6_port = htons(static_cast<std::uint16_t>(port));
        inet_pton(AF_INET6, ip.c_str(), &in6->sin6_addr);
        length = sizeof *in6;
    } else {
        auto *in = reinterpret_cast<sockaddr_in *>(&address);
        in->sin_family = AF_INET;
        in->sin_port = htons(static_cast<std::uint16_t>(port));
        inet_pton(AF_INET, ip.c_str(), &in->sin_addr);
    }
    fd = socket(six ? AF_INET6 : AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd < 0 || bind(fd, reinterpret_cast<sockaddr *>(&address), length) != 0)
        throw std::runtime_error("bind " + ip + ": " + std::strerror(errno));
    const int yes = 1;
    setsockopt(fd, SOL_SOCKET, SO_TIMESTAMPNS, &yes, sizeof yes);
    if (port == 0) {
        getsockname(fd, reinterpret_cast<sockaddr *>(&address), &length);
        boundPort = ntohs(six ? reinterpret_cast<sockaddr_in6 *>(&address)->sin6_port
                              : reinterpret_cast<sockaddr_in *>(&address)->sin_port);
    }
}

LightReceiver::~LightReceiver() {
    if (fd >= 0)
        close(fd);
}

std::optional<Datagram> LightReceiver::next(std::chrono::milliseconds patience) {
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + patience;
    pollfd waiting{fd, POLLIN, 0};
    for (int ready = 0; ready <= 0;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        ready = poll(&waiting, 1, static_cast<int>(std::max<long long>(0, left.count())));
        if (ready == 0 || (ready < 0 && errno != EINTR))
            return std::nullopt;
    }
    Datagram datagram(65536);
    iovec part{datagram.data(), datagram.size()};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(timespec))];
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    const ssize_t got = recvmsg(fd, &message, 0);
    if (got < 0)
        return std::nullopt;
    if (const cmsghdr *header = CMSG_FIRSTHDR(&message)) {
        timespec stamp;
        std::memcpy(&stamp, CMSG_DATA(header), sizeof stamp);
        lastArrival = Arrival(std::chrono::duration_cast<Arrival::duration>(
            std::chrono::seconds(stamp.tv_sec) + std::chrono::nanoseconds(stamp.tv_nsec)));
    }
    datagram.resize(static_cast<std::size_t>(got));
    return datagram;
}

void LightReceiver::drain() {
    char byte;
    while (recv(fd, &byte, sizeof byte, MSG_DONTWAIT) >= 0) {
    }
}

} // namespace test
