#include "tools/wall/receiver.h"

#include "tools/lights/text.h"
#include "tools/wall/loopbackAlias.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <sys/time.h>
#include <system_error>
#include <unistd.h>

namespace panelwall {

// A datagram's length field has 16 bits, so this holds any.
static constexpr std::size_t largestDatagram = 65536;

// At most this many are read for one device before others, signals and drawing get their turn.
static constexpr int datagramsPerTurn = 4096;

// A datagram that waited longer counts as arrived this long ago.
static constexpr std::chrono::microseconds longestWait = std::chrono::seconds(1);

std::vector<Endpoint> findEndpoints(const config::Document &document,
                                    std::vector<config::Problem> &problems, Reach reach) {
    std::vector<Endpoint> endpoints;
    std::map<std::string, std::size_t, std::less<>> taken;
    for (std::size_t i = 0; i < document.devices.size(); ++i) {
        const config::DeviceEntry &device = document.devices[i];
        const auto report = [&](const std::string &text) {
            problems.push_back({"/devices/" + std::to_string(i) + "/ip",
                                lights::nameDevice(i, device) + ": " + text});
        };
        const auto endpoint = lights::parseEndpoint(device.ip, device.port());
        if (!endpoint)
            report("the address does not parse; write four decimal numbers such as 127.0.0.2, or "
                   "::1");
        else if (reach == Reach::Loopback && !lights::isLoopback(*endpoint))
            report("not a loopback address; the wall listens on this machine only, so give the "
                   "device an address in 127.0.0.0/8, or ::1");
        else if (const auto [earlier, isNew] = taken.emplace(endpoint->bytes(), i); !isNew)
            report("device " + std::to_string(earlier->second) +
                   " has the same address and port; give each device an address of its own, such "
                   "as 127.0.0.2, 127.0.0.3 and so on");
        else
            endpoints.push_back(*endpoint);
    }
    return endpoints;
}

static std::string adviseOn(int error, const std::string &ip) {
    const std::string reason = std::generic_category().message(error);
    switch (error) {
    case EADDRINUSE:
        return "the port is in use, perhaps by another wall; end the program that holds it, or "
               "give the device another loopback address";
    case EADDRNOTAVAIL:
        return "this machine has no such address (" + reason + "); add it with \"" +
               loopbackAliasCommand(ip) + "\", or take one that it has, such as 127.0.0.1";
    case EAFNOSUPPORT:
        return "this machine has no addresses of this family (" + reason +
               "); give the device an address in 127.0.0.0/8";
    default:
        return "the socket cannot be opened: " + reason;
    }
}

Receiver::~Receiver() {
    for (const int fd : sockets)
        close(fd);
}

std::vector<config::Problem> Receiver::open(const config::Document &document,
                                            const std::vector<Endpoint> &endpoints) {
    std::vector<config::Problem> problems;
    buffer.resize(largestDatagram);
    lastArrivals.resize(endpoints.size());
    for (std::size_t i = 0; i < endpoints.size(); ++i) {
        const Endpoint &endpoint = endpoints[i];
        const int fd = socket(endpoint.address.ss_family, SOCK_DGRAM, 0);
        if (fd >= 0) {
            sockets.push_back(fd);
            fcntl(fd, F_SETFD, FD_CLOEXEC);
            const int on = 1; // the system attaches the arrival time to every datagram
            setsockopt(fd, SOL_SOCKET, SO_TIMESTAMP, &on, sizeof on);
        }
        if (fd < 0 || bind(fd, &endpoint.any, endpoint.length) != 0)
            problems.push_back({"/devices/" + std::to_string(i),
                                lights::nameDevice(i, document.devices[i]) + ": " +
                                    adviseOn(errno, document.devices[i].ip)});
    }
    return problems;
}

// The arrival time that the system attached to a datagram, at most `now`, the time of reading;
// `now` if it attached none. The system uses the calendar clock, so setting that clock between
// arrival and reading shifts the result, by no more than a second.
static Clock::time_point arrivalOf(const msghdr &message, Clock::time_point now) {
    auto *header = message.msg_controllen > 0 ? CMSG_FIRSTHDR(&message) : nullptr;
    if (header == nullptr || header->cmsg_level != SOL_SOCKET || header->cmsg_type != SCM_TIMESTAMP)
        return now;
    timeval arrival;
    std::memcpy(&arrival, CMSG_DATA(header), sizeof arrival);
    timeval read;
    gettimeofday(&read, nullptr);
    const std::chrono::microseconds waited =
        std::chrono::seconds(read.tv_sec - arrival.tv_sec) +
        std::chrono::microseconds(read.tv_usec - arrival.tv_usec);
    return now - std::clamp(waited, std::chrono::microseconds::zero(), longestWait);
}

bool Receiver::readAll(const Handler &handler) {
    bool any = false;
    for (std::size_t i = 0; i < sockets.size(); ++i) {
        Clock::time_point &last = lastArrivals[i];
        for (int turn = 0; turn < datagramsPerTurn; ++turn) {
            iovec place{buffer.data(), buffer.size()};
            alignas(cmsghdr) char arrival[CMSG_SPACE(sizeof(timeval))];
            msghdr message{};
            message.msg_iov = &place;
            message.msg_iovlen = 1;
            message.msg_control = arrival;
            message.msg_controllen = sizeof arrival;
            const ssize_t size = recvmsg(sockets[i], &message, MSG_DONTWAIT);
            if (size < 0)
                break;
            last = std::max(last, arrivalOf(message, Clock::now()));
            handler(i, std::span(buffer.data(), static_cast<std::size_t>(size)), last);
            any = true;
        }
    }
    return any;
}

} // namespace panelwall
