#include "tools/mirrorctl/doctor/xGreeting.h"

#include <X11/X.h>
#include <X11/Xauth.h>
#include <algorithm>
#include <arpa/inet.h>
#include <bit>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <xcb/xcb.h>

namespace mirrorctl {

namespace {

using Clock = std::chrono::steady_clock;
using Answer = XGreeting::Answer;

constexpr auto patience = std::chrono::seconds(4);
// A server that resets hangs up on those that come meanwhile, and is back within milliseconds.
constexpr auto resetPatience = std::chrono::seconds(2);
constexpr int resetPauseMilliseconds = 20;

struct Key {
    std::string name;
    std::string data;
};

// False when the deadline passed first.
bool awaitEvents(int fd, short events, Clock::time_point end) {
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
        pollfd waiting{fd, events, 0};
        const int ready = poll(&waiting, 1, static_cast<int>(std::max<long long>(0, left.count())));
        if (ready >= 0 || errno != EINTR)
            return ready > 0;
    }
}

// A new connection in `fd`, or -1 and why there is none.
Answer connectTo(int &fd, const sockaddr *address, socklen_t length, Clock::time_point end) {
    fd = socket(address->sa_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (fd < 0)
        return Answer::nobody;
    int error = connect(fd, address, length) == 0 ? 0 : errno;
    if (error == EINPROGRESS && awaitEvents(fd, POLLOUT, end)) {
        socklen_t size = sizeof error;
        getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &size);
    }
    if (error == 0)
        return Answer::welcome;
    close(fd);
    fd = -1;
    // EAGAIN: too many are waiting for the server already.
    return error == EINPROGRESS || error == EAGAIN || error == ETIMEDOUT ? Answer::silence
                                                                         : Answer::nobody;
}

Answer connectLocally(int &fd, int display, Clock::time_point end) {
    const std::string path = "/tmp/.X11-unix/X" + std::to_string(display);
    // The same name exists in the file system and, with many servers, without a file as well.
    Answer answer = Answer::nobody;
    for (const std::string &name : {path, std::string(1, '\0') + path}) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, name.data(), name.size());
        const std::size_t terminator = name[0] == '\0' ? 0 : 1;
        answer = connectTo(
            fd, reinterpret_cast<const sockaddr *>(&address),
            static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size() + terminator),
            end);
        if (answer != Answer::nobody)
            break;
    }
    return answer;
}

Answer connectOverNetwork(int &fd, const std::string &host, int display, Clock::time_point end) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICSERV;
    addrinfo *list = nullptr;
    const bool isBracketed = host.size() > 2 && host.front() == '[' && host.back() == ']'; // IPv6
    const std::string name = isBracketed ? host.substr(1, host.size() - 2) : host;
    if (getaddrinfo(name.c_str(), std::to_string(X_TCP_PORT + display).c_str(), &hints, &list) != 0)
        return Answer::nobody;
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owner(list, freeaddrinfo);
    Answer answer = Answer::nobody;
    for (const addrinfo *entry = list; entry && answer != Answer::welcome; entry = entry->ai_next)
        answer = connectTo(fd, entry->ai_addr, entry->ai_addrlen, end);
    return answer;
}

// The key for this server in the user's authority file. Servers on this machine are entered there
// under its host name, whichever way they are reached.
Key findKey(int fd, int display) {
    unsigned short family = FamilyLocal;
    char host[HOST_NAME_MAX + 1] = {};
    gethostname(host, HOST_NAME_MAX);
    std::string address = host;
    sockaddr_storage peer{};
    socklen_t size = sizeof peer;
    getpeername(fd, reinterpret_cast<sockaddr *>(&peer), &size);
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
    const std::string number = std::to_string(display);
    char name[] = "MIT-MAGIC-COOKIE-1";
    char *names[] = {name};
    const int lengths[] = {static_cast<int>(sizeof name - 1)};
    const std::unique_ptr<Xauth, decltype(&XauDisposeAuth)> found(
        XauGetBestAuthByAddr(family, static_cast<unsigned short>(address.size()), address.data(),
                             static_cast<unsigned short>(number.size()), number.data(), 1, names,
                             lengths),
        XauDisposeAuth);
    if (!found)
        return {};
    return {{found->name, found->name_length}, {found->data, found->data_length}};
}

std::string greetingWith(const Key &key) {
    xcb_setup_request_t request{};
    request.byte_order = std::endian::native == std::endian::little ? 'l' : 'B';
    request.protocol_major_version = X_PROTOCOL;
    request.protocol_minor_version = X_PROTOCOL_REVISION;
    request.authorization_protocol_name_len = static_cast<std::uint16_t>(key.name.size());
    request.authorization_protocol_data_len = static_cast<std::uint16_t>(key.data.size());
    std::string bytes(reinterpret_cast<const char *>(&request), sizeof request);
    for (const std::string &part : {key.name, key.data}) {
        bytes += part;
        bytes.resize((bytes.size() + 3) / 4 * 4);
    }
    return bytes;
}

// Exactly that much. False when the connection ended first; the deadline is passed or not.
bool readWhole(int fd, void *bytes, std::size_t size, Clock::time_point end) {
    auto *to = static_cast<char *>(bytes);
    while (size > 0 && awaitEvents(fd, POLLIN, end)) {
        const ssize_t got = recv(fd, to, size, 0);
        if (got == 0 || (got < 0 && errno != EINTR && errno != EAGAIN))
            return false;
        if (got > 0) {
            to += got;
            size -= static_cast<std::size_t>(got);
        }
    }
    return size == 0;
}

// Without what a terminal would take for an order.
std::string firstLine(const std::string &text) {
    const auto end = std::find_if(text.begin(), text.end(),
                                  [](unsigned char letter) { return letter < 32 || letter > 126; });
    return {text.begin(), end};
}

} // namespace

XGreeting::XGreeting() {
    char *hostName = nullptr;
    int display = 0;
    if (xcb_parse_display(nullptr, &hostName, &display, nullptr) == 0)
        return;
    const std::string host = hostName;
    std::free(hostName);
    local = host.empty() || host == "unix";
    const auto end = Clock::now() + resetPatience;
    for (;;) {
        outcome = greet(host, display);
        if (outcome != Answer::hangUp || Clock::now() >= end)
            return;
        poll(nullptr, 0, resetPauseMilliseconds);
    }
}

XGreeting::~XGreeting() {
    if (fd >= 0)
        close(fd);
}

XGreeting::Answer XGreeting::greet(const std::string &host, int display) {
    if (fd >= 0)
        close(fd);
    fd = -1;
    const auto end = Clock::now() + patience;
    const Answer connected =
        local ? connectLocally(fd, display, end) : connectOverNetwork(fd, host, display, end);
    if (connected != Answer::welcome)
        return connected;

    const Key key = findKey(fd, display);
    showedKey = !key.name.empty();
    const std::string greeting = greetingWith(key);
    if (send(fd, greeting.data(), greeting.size(), MSG_NOSIGNAL) !=
        static_cast<ssize_t>(greeting.size()))
        return Answer::hangUp;
    xcb_setup_failed_t reply{};
    if (!readWhole(fd, &reply, sizeof reply, end))
        return Clock::now() < end ? Answer::hangUp : Answer::silence;
    constexpr std::uint8_t success = 1;
    if (reply.status == success)
        return Answer::welcome;
    std::string text(std::size_t{reply.length} * 4, '\0');
    if (readWhole(fd, text.data(), text.size(), end))
        why = firstLine(text);
    return Answer::refusal;
}

} // namespace mirrorctl
