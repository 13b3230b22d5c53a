#include "tools/panelwall/web/connection.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace panelwall {

using SteadyClock = std::chrono::steady_clock;

Connection::Connection(int descriptor)
    : fd(descriptor), requestEnd(SteadyClock::now() + requestTime) {
    fcntl(fd, F_SETFD, FD_CLOEXEC);
    fcntl(fd, F_SETFL, O_NONBLOCK);
    const int yes = 1;
    setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
}

Connection::~Connection() {
    close(fd);
}

bool Connection::wait(short events, SteadyClock::time_point deadline) const {
    for (;;) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - SteadyClock::now()).count();
        if (left <= 0)
            return false;
        pollfd waiting{fd, events, 0};
        const int ready = poll(&waiting, 1, static_cast<int>(left));
        if (ready > 0)
            return true;
        if (ready < 0 && errno != EINTR)
            return false;
    }
}

bool Connection::is_readable() const {
    return received < largestRequest && wait(POLLIN, requestEnd);
}

bool Connection::is_writable() const {
    return wait(POLLOUT, SteadyClock::now() + writeTime);
}

ssize_t Connection::read(char *bytes, std::size_t size) {
    const std::size_t room = largestRequest - received;
    if (room == 0 || !wait(POLLIN, requestEnd))
        return -1;
    const ssize_t taken = recv(fd, bytes, std::min(size, room), 0);
    if (taken > 0)
        received += static_cast<std::size_t>(taken);
    return taken;
}

ssize_t Connection::write(const char *bytes, std::size_t size) {
    std::size_t sent = 0;
    const auto deadline = SteadyClock::now() + writeTime;
    while (sent < size) {
        const ssize_t part = send(fd, bytes + sent, size - sent, 0);
        if (part >= 0)
            sent += static_cast<std::size_t>(part);
        else if (errno != EAGAIN || !wait(POLLOUT, deadline))
            return -1;
    }
    return static_cast<ssize_t>(sent);
}

using NameCall = int (*)(int, sockaddr *, socklen_t *);

static void nameEnd(NameCall call, int fd, std::string &ip, int &port) {
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    if (call(fd, reinterpret_cast<sockaddr *>(&address), &length) != 0)
        return;
    char text[INET6_ADDRSTRLEN] = "";
    if (address.ss_family == AF_INET6) {
        const auto *six = reinterpret_cast<const sockaddr_in6 *>(&address);
        inet_ntop(AF_INET6, &six->sin6_addr, text, sizeof text);
        port = ntohs(six->sin6_port);
    } else {
        const auto *four = reinterpret_cast<const sockaddr_in *>(&address);
        inet_ntop(AF_INET, &four->sin_addr, text, sizeof text);
        port = ntohs(four->sin_port);
    }
    ip = text;
}

void Connection::get_remote_ip_and_port(std::string &ip, int &port) const {
    nameEnd(getpeername, fd, ip, port);
}

void Connection::get_local_ip_and_port(std::string &ip, int &port) const {
    nameEnd(getsockname, fd, ip, port);
}

void Connection::finish() {
    shutdown(fd, SHUT_WR);
    const auto deadline = SteadyClock::now() + std::chrono::milliseconds(500);
    char scrap[4096];
    for (std::size_t total = 0; total < 16 * largestRequest && wait(POLLIN, deadline);) {
        const ssize_t size = recv(fd, scrap, sizeof scrap, 0);
        if (size <= 0)
            return;
        total += static_cast<std::size_t>(size);
    }
}

void Connection::shutDown() {
    shutdown(fd, SHUT_RDWR);
}

} // namespace panelwall
