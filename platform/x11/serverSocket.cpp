#include "platform/x11/serverSocket.h"

#include "platform/objects/wakeUp.h"

#include <X11/X.h>
#include <X11/Xauth.h>
#include <arpa/inet.h>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits.h>
#include <memory>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <xcb/xcb.h>

namespace platform::x11 {

namespace {

// Connects server.descriptor. False on failure; server.silent then says whether the server is
// merely silent.
bool connectUntil(ServerSocket &server, const sockaddr *address, socklen_t length,
                  Clock::time_point deadline) {
    server.descriptor =
        Descriptor(socket(address->sa_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!server.descriptor.valid())
        return false;
    const int fd = server.descriptor.get();
    int error = connect(fd, address, length) == 0 ? 0 : errno;
    if (error == EINPROGRESS && waitUntilReady(fd, POLLOUT, deadline)) {
        socklen_t errorLength = sizeof error;
        getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &errorLength);
    }
    if (error == 0)
        return true;
    // EAGAIN: the server's queue of connections to accept is full.
    server.silent = error == EINPROGRESS || error == ETIMEDOUT || error == EAGAIN;
    server.descriptor.reset();
    return false;
}

void openLocal(ServerSocket &server, int display, Clock::time_point deadline) {
    const std::string path = "/tmp/.X11-unix/X" + std::to_string(display);
    // The socket is in the file system and, with many servers, also in the abstract namespace.
    for (const std::string &name : {path, std::string(1, '\0') + path}) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, name.data(), name.size());
        const bool isFile = name[0] != '\0';
        const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size() +
                                                   (isFile ? 1 : 0));
        if (connectUntil(server, reinterpret_cast<const sockaddr *>(&address), length, deadline) ||
            server.silent)
            return;
    }
}

void openRemote(ServerSocket &server, const std::string &host, int display,
                Clock::time_point deadline) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICSERV;
    addrinfo *list = nullptr;
    if (getaddrinfo(host.c_str(), std::to_string(6000 + display).c_str(), &hints, &list) != 0)
        return;
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owner(list, freeaddrinfo);
    for (const addrinfo *entry = list; entry != nullptr; entry = entry->ai_next) {
        if (!connectUntil(server, entry->ai_addr, entry->ai_addrlen, deadline))
            continue;
        const int on = 1;
        setsockopt(server.descriptor.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        return;
    }
}

// Finds the cookie for this server in the user's authority file. Servers on this machine are listed
// there under its host name, however they are reached.
void findAuthorisation(ServerSocket &server, int display) {
    unsigned short family = FamilyLocal;
    std::string address;
    sockaddr_storage peer{};
    socklen_t peerLength = sizeof peer;
    getpeername(server.descriptor.get(), reinterpret_cast<sockaddr *>(&peer), &peerLength);
    if (peer.ss_family == AF_INET) {
        const auto &in = reinterpret_cast<const sockaddr_in &>(peer).sin_addr;
        if (ntohl(in.s_addr) != INADDR_LOOPBACK) {
            family = FamilyInternet;
            address.assign(reinterpret_cast<const char *>(&in), sizeof in);
        }
    } else if (peer.ss_family == AF_INET6) {
        const auto &in6 = reinterpret_cast<const sockaddr_in6 &>(peer).sin6_addr;
        if (IN6_IS_ADDR_LOOPBACK(&in6) == 0) {
            family = FamilyInternet6;
            address.assign(reinterpret_cast<const char *>(&in6), sizeof in6);
        }
    }
    if (family == FamilyLocal) {
        char name[HOST_NAME_MAX + 1] = {};
        gethostname(name, HOST_NAME_MAX);
        address = name;
    }

    const std::string number = std::to_string(display);
    char cookieName[] = "MIT-MAGIC-COOKIE-1";
    char *names[] = {cookieName};
    const int nameLengths[] = {static_cast<int>(std::strlen(cookieName))};
    Xauth *found = XauGetBestAuthByAddr(family, static_cast<unsigned short>(address.size()),
                                        address.data(), static_cast<unsigned short>(number.size()),
                                        number.data(), 1, names, nameLengths);
    if (found == nullptr)
        return;
    server.authorisationName.assign(found->name, found->name_length);
    server.authorisationData.assign(found->data, found->data_length);
    XauDisposeAuth(found);
}

// An IPv6 address may be in brackets.
std::string withoutBrackets(const std::string &host) {
    const bool bracketed = host.size() > 2 && host.front() == '[' && host.back() == ']';
    return bracketed ? host.substr(1, host.size() - 2) : host;
}

} // namespace

ServerSocket openServerSocket(Clock::time_point deadline) {
    ServerSocket server;
    char *host = nullptr;
    int display = 0;
    if (xcb_parse_display(nullptr, &host, &display, &server.screen) == 0)
        return server;
    const std::string hostName = host;
    std::free(host);

    server.local = hostName.empty() || hostName == "unix";
    if (server.local)
        openLocal(server, display, deadline);
    else
        openRemote(server, withoutBrackets(hostName), display, deadline);
    if (server.descriptor.valid())
        findAuthorisation(server, display);
    return server;
}

} // namespace platform::x11
