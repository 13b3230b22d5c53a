#include "tools/panelwall/web/listener.h"

#include "tools/lights/loopbackAddress.h"
#include "tools/panelwall/web/socketTable.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace panelwall {

Listener::~Listener() {
    if (descriptor >= 0)
        close(descriptor);
}

static std::string nameOf(const std::string &address, int port) {
    const bool six = address.find(':') != std::string::npos;
    return (six ? "[" + address + "]" : address) + ":" + std::to_string(port);
}

static std::string describeFailure(const std::string &address, int port, int error) {
    const std::string place = "the live page cannot be served at " + nameOf(address, port) + ": ";
    if (error == EADDRINUSE) {
        const std::string owner = portOwner(port);
        return place + "port " + std::to_string(port) + " is in use" +
               (owner.empty() ? "" : " " + owner) +
               "; end that program, or choose another port with --web PORT (0 takes any free one)";
    }
    if (error == EACCES)
        return place + "port " + std::to_string(port) +
               " is reserved for the system; choose one from 1024 on";
    if (error == EADDRNOTAVAIL)
        return place + "this machine has no such address; 127.0.0.1 is its own, 0.0.0.0 means all";
    // NOLINTNEXTLINE(concurrency-mt-unsafe): the text is constant or the thread's own
    return place + std::strerror(error);
}

std::string Listener::open(const std::string &address, int port) {
    auto endpoint = parseEndpoint(address, port);
    if (!endpoint)
        return "the live page cannot be served at " + address +
               ": write an address such as 127.0.0.1, ::1 or 0.0.0.0";
    descriptor = socket(endpoint->address.ss_family, SOCK_STREAM, 0);
    if (descriptor < 0)
        return describeFailure(address, port, errno);
    fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    fcntl(descriptor, F_SETFL, O_NONBLOCK);
    // The connections of a wall that has just ended may linger; another wall may not.
    const int yes = 1;
    setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    auto *full = reinterpret_cast<sockaddr *>(&endpoint->address);
    if (bind(descriptor, full, endpoint->length) != 0 || listen(descriptor, SOMAXCONN) != 0)
        return describeFailure(address, port, errno);
    getsockname(descriptor, full, &endpoint->length);
    // All addresses are no place to go to; the machine's own is one of them.
    const std::string place = address == "0.0.0.0" ? "127.0.0.1"
                              : address == "::"    ? "::1"
                                                   : address;
    boundName = nameOf(place, portOf(endpoint->address));
    return {};
}

int Listener::accept() {
    for (;;) {
        pollfd waiting[2] = {{descriptor, POLLIN, 0}, {stopping.readEnd(), POLLIN, 0}};
        if (poll(waiting, 2, -1) < 0)
            continue;
        if (waiting[1].revents != 0)
            return -1;
        const int fd = ::accept(descriptor, nullptr, nullptr);
        if (fd >= 0)
            return fd;
        // Without descriptors to spare the connection goes on waiting; so does this loop, a moment.
        if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) {
            poll(&waiting[1], 1, 100);
        }
    }
}

void Listener::stop() {
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = write(stopping.writeEnd(), &byte, 1);
}

} // namespace panelwall
