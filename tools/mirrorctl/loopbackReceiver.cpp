#include "tools/mirrorctl/loopbackReceiver.h"

#include "tools/lights/address.h"
#include "tools/lights/text.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace mirrorctl {

// The addresses to try, in this order. Some systems have only 127.0.0.1. The process ID gives each
// program its own addresses.
static std::vector<config::DeviceEntry> candidates() {
    std::vector<config::DeviceEntry> list;
    const auto pid = static_cast<unsigned>(getpid());
    for (unsigned i = 0; i < 4; ++i) {
        const auto ip = lights::format("127.254.%u.%u", (pid / 250 + i) % 250, 1 + pid % 250);
        list.push_back({ip, 2, 0, 1.0, {}});
    }
    list.push_back({"127.0.0.1", 2, 0, 1.0, {}});
    list.push_back({"127.0.0.1", 1, 0, 1.0, {}});
    return list;
}

LoopbackReceiver::LoopbackReceiver(const config::Document &document) {
    for (const auto &candidate : candidates()) {
        const auto isCandidate = [&](const config::DeviceEntry &device) {
            return device.ip == candidate.ip && device.port() == candidate.port();
        };
        if (std::any_of(document.devices.begin(), document.devices.end(), isCandidate))
            continue;
        const auto endpoint = lights::parseEndpoint(candidate.ip, candidate.port()).value();
        const int on = 1;
        fd = socket(AF_INET, SOCK_DGRAM, 0);
        if (fd >= 0 && fcntl(fd, F_SETFD, FD_CLOEXEC) == 0 && fcntl(fd, F_SETFL, O_NONBLOCK) == 0 &&
            setsockopt(fd, SOL_SOCKET, SO_TIMESTAMP, &on, sizeof on) == 0 &&
            bind(fd, &endpoint.any, endpoint.length) == 0) {
            own = candidate;
            why.clear();
            return;
        }
        why = std::generic_category().message(errno);
        if (fd >= 0)
            close(std::exchange(fd, -1));
    }
}

LoopbackReceiver::~LoopbackReceiver() {
    if (fd >= 0)
        close(fd);
}

std::optional<LoopbackReceiver::Datagram> LoopbackReceiver::next() {
    for (;;) {
        Datagram datagram;
        datagram.bytes.resize(1024);
        alignas(cmsghdr) char control[CMSG_SPACE(sizeof(timeval))];
        iovec part{datagram.bytes.data(), datagram.bytes.size()};
        msghdr message = {};
        message.msg_iov = &part;
        message.msg_iovlen = 1;
        message.msg_control = control;
        message.msg_controllen = sizeof control;
        const ssize_t size = recvmsg(fd, &message, 0);
        if (size < 0 && errno == EINTR)
            continue;
        if (size < 0)
            return std::nullopt;
        datagram.bytes.resize(static_cast<std::size_t>(size));
        for (cmsghdr *entry = CMSG_FIRSTHDR(&message); entry; entry = CMSG_NXTHDR(&message, entry))
            if (entry->cmsg_level == SOL_SOCKET && entry->cmsg_type == SCM_TIMESTAMP) {
                timeval stamp;
                std::memcpy(&stamp, CMSG_DATA(entry), sizeof stamp);
                datagram.time =
                    static_cast<double>(stamp.tv_sec) + static_cast<double>(stamp.tv_usec) / 1e6;
                return datagram;
            }
    }
}

} // namespace mirrorctl
