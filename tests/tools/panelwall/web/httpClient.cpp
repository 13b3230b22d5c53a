#include "tests/tools/panelwall/web/httpClient.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <regex>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace test {

using SteadyClock = std::chrono::steady_clock;
static constexpr std::chrono::seconds patience{30};

HttpClient::HttpClient(int port) : fd(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<in_port_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        close(fd);
        throw std::runtime_error("no connection");
    }
}

HttpClient::~HttpClient() {
    close(fd);
}

bool HttpClient::send(const std::string &bytes) {
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const ssize_t part = ::send(fd, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (part <= 0)
            return false;
        sent += static_cast<std::size_t>(part);
    }
    return true;
}

bool HttpClient::readMore(SteadyClock::time_point deadline, bool &ended) {
    pollfd waiting{fd, POLLIN, 0};
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - SteadyClock::now());
    if (left.count() <= 0 || poll(&waiting, 1, static_cast<int>(left.count())) <= 0)
        return false;
    char bytes[65536];
    const ssize_t size = recv(fd, bytes, sizeof bytes, 0);
    ended = size <= 0;
    if (!ended)
        answer.append(bytes, static_cast<std::size_t>(size));
    return !ended;
}

bool HttpClient::readEvents(const std::string &root) {
    send("GET " + root + "events HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
    return waitFor("Content-Type: text/event-stream");
}

bool HttpClient::waitFor(const std::string &text) {
    const auto deadline = SteadyClock::now() + patience;
    bool ended = false;
    while (answer.find(text) == std::string::npos)
        if (!readMore(deadline, ended))
            return false;
    return true;
}

bool HttpClient::waitEnd(std::chrono::milliseconds limit) {
    const auto deadline = SteadyClock::now() + limit;
    bool ended = false;
    while (readMore(deadline, ended)) {
    }
    return ended;
}

PageAddress addressIn(const std::string &text) {
    static const std::regex address("http://127\\.0\\.0\\.1:(\\d+)(/[\\w-]{22}/)");
    std::smatch found;
    if (!std::regex_search(text, found, address))
        return {};
    return {std::stoi(found[1]), found[2]};
}

std::string get(int port, const std::string &path, const std::string &host,
                const std::string &headers) {
    HttpClient client(port);
    client.send("GET " + path + " HTTP/1.1\r\nHost: " + host + "\r\n" + headers + "\r\n");
    client.waitEnd();
    return client.answer;
}

int statusOf(const std::string &answer) {
    const std::string head = "HTTP/1.1 ";
    return answer.substr(0, head.size()) == head ? std::atoi(answer.c_str() + head.size()) : 0;
}

} // namespace test
