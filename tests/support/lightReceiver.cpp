#include "tests/support/lightReceiver.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <memory>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace test {

namespace {

using Address = std::unique_ptr<addrinfo, decltype(&freeaddrinfo)>;

Address udpAddress(const std::string &ip, int port) {
    addrinfo wanted{};
    wanted.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
    wanted.ai_socktype = SOCK_DGRAM;
    addrinfo *found = nullptr;
    if (getaddrinfo(ip.c_str(), std::to_string(port).c_str(), &wanted, &found) != 0)
        throw std::runtime_error("no address: " + ip);
    return Address(found, &freeaddrinfo);
}

} // namespace

LightReceiver::LightReceiver(const std::string &ip, int port) {
    const Address address = udpAddress(ip, port);
    fd = socket(address->ai_family, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd < 0 || bind(fd, address->ai_addr, address->ai_addrlen) != 0)
        throw std::runtime_error("bind " + ip + ": " + std::strerror(errno));
    const int yes = 1;
    setsockopt(fd, SOL_SOCKET, SO_TIMESTAMP, &yes, sizeof yes);
    sockaddr_in6 bound{}; // an IPv4 address has its port in the same place
    socklen_t length = sizeof bound;
    getsockname(fd, reinterpret_cast<sockaddr *>(&bound), &length);
    boundPort = ntohs(bound.sin6_port);
}

LightReceiver::~LightReceiver() {
    if (fd >= 0)
        close(fd);
}

void LightReceiver::join(const std::string &interface) {
    sockaddr_in bound{};
    socklen_t length = sizeof bound;
    getsockname(fd, reinterpret_cast<sockaddr *>(&bound), &length);
    ip_mreq group{};
    group.imr_multiaddr = bound.sin_addr;
    inet_pton(AF_INET, interface.c_str(), &group.imr_interface);
    if (setsockopt(fd, IPPROTO_IP, IP_ADD_MEMBERSHIP, &group, sizeof group) != 0)
        throw std::runtime_error("join: " + std::string(std::strerror(errno)));
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
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(timeval))];
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    const ssize_t got = recvmsg(fd, &message, 0);
    if (got < 0)
        return std::nullopt;
    if (const cmsghdr *header = CMSG_FIRSTHDR(&message)) {
        timeval stamp;
        std::memcpy(&stamp, CMSG_DATA(header), sizeof stamp);
        lastArrival =
            Arrival(std::chrono::seconds(stamp.tv_sec) + std::chrono::microseconds(stamp.tv_usec));
    }
    datagram.resize(static_cast<std::size_t>(got));
    return datagram;
}

void LightReceiver::drain() {
    char byte;
    while (recv(fd, &byte, sizeof byte, MSG_DONTWAIT) >= 0) {
    }
}

void sendTo(const std::string &ip, int port, const Datagram &bytes) {
    const Address address = udpAddress(ip, port);
    const int fd = socket(address->ai_family, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const ssize_t sent =
        sendto(fd, bytes.data(), bytes.size(), 0, address->ai_addr, address->ai_addrlen);
    close(fd);
    if (sent != static_cast<ssize_t>(bytes.size()))
        throw std::runtime_error("not sent to " + ip);
}

} // namespace test
