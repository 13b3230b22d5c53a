#include "tests/tools/mirrorctl/plainProxy.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

namespace test {

namespace {

// Far from the numbers that servers choose for themselves, and different for each server.
constexpr int numberOffset = 20000;

struct Address {
    sockaddr_un name{};
    socklen_t length = 0;
};

Address abstractAddress(const std::string &path) {
    Address address;
    address.name.sun_family = AF_UNIX;
    path.copy(address.name.sun_path + 1, sizeof address.name.sun_path - 1);
    address.length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + path.size());
    return address;
}

std::string pathOf(int number) {
    return "/tmp/.X11-unix/X" + std::to_string(number);
}

struct Pair {
    int client;
    int server;
};

void closeBoth(const Pair &pair) {
    close(pair.client);
    close(pair.server);
}

// False when one side has ended.
bool pass(int from, int to) {
    char bytes[65536];
    const ssize_t size = recv(from, bytes, sizeof bytes, 0);
    for (ssize_t done = 0; done < size;) {
        const ssize_t sent =
            send(to, bytes + done, static_cast<std::size_t>(size - done), MSG_NOSIGNAL);
        if (sent < 0)
            return false;
        done += sent;
    }
    return size > 0;
}

} // namespace

PlainProxy::PlainProxy(const std::string &server) {
    const int number = std::stoi(server.substr(1));
    serverPath = pathOf(number);
    name = ":" + std::to_string(number + numberOffset);
    const Address address = abstractAddress(pathOf(number + numberOffset));
    listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (bind(listener, reinterpret_cast<const sockaddr *>(&address.name), address.length) != 0 ||
        listen(listener, 16) != 0 ||
        socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, wakeUp) != 0) {
        close(listener);
        throw std::runtime_error("no proxy for the X server");
    }
    thread = std::thread([this] { serve(); });
}

PlainProxy::~PlainProxy() {
    shutdown(wakeUp[0], SHUT_RDWR);
    thread.join();
    for (const int fd : {wakeUp[0], wakeUp[1], listener})
        close(fd);
}

// The proxy's thread.
void PlainProxy::serve() {
    const Address address = abstractAddress(serverPath);
    std::vector<Pair> pairs;
    for (;;) {
        std::vector<pollfd> waiting = {{wakeUp[1], POLLIN, 0}, {listener, POLLIN, 0}};
        for (const Pair &pair : pairs) {
            waiting.push_back({pair.client, POLLIN, 0});
            waiting.push_back({pair.server, POLLIN, 0});
        }
        poll(waiting.data(), waiting.size(), -1);
        if (waiting[0].revents != 0)
            break;
        auto next = waiting.begin() + 2;
        std::erase_if(pairs, [&next](const Pair &pair) {
            const bool hasClientEnded = next++->revents != 0 && !pass(pair.client, pair.server);
            const bool hasServerEnded = next++->revents != 0 && !pass(pair.server, pair.client);
            if (hasClientEnded || hasServerEnded)
                closeBoth(pair);
            return hasClientEnded || hasServerEnded;
        });
        if (waiting[1].revents == 0)
            continue;
        const Pair pair{accept4(listener, nullptr, nullptr, SOCK_CLOEXEC),
                        socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
        if (connect(pair.server, reinterpret_cast<const sockaddr *>(&address.name),
                    address.length) == 0)
            pairs.push_back(pair);
        else
            closeBoth(pair);
    }
    for (const Pair &pair : pairs)
        closeBoth(pair);
}

} // namespace test
