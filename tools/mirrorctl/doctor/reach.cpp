#include "tools/mirrorctl/doctor/reach.h"

#include "tools/config/quote.h"
#include "tools/lights/deviceAddress.h"
#include "tools/mirrorctl/doctor/system.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <netinet/in.h>
#include <optional>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace mirrorctl {

namespace {

union Address {
    sockaddr any;
    sockaddr_in v4;
    sockaddr_in6 v6;
};

class Attempt {
public:
    explicit Attempt(const config::DeviceEntry &deviceToReach) : device(deviceToReach) {}
    ~Attempt() {
        if (fd >= 0)
            close(fd);
    }
    Attempt(Attempt &&other) noexcept
        : device(other.device), problem(std::move(other.problem)), fd(std::exchange(other.fd, -1)),
          error(other.error), isLoopback(other.isLoopback), from(std::move(other.from)) {}
    Attempt(const Attempt &) = delete;
    Attempt &operator=(const Attempt &) = delete;

    void begin();
    void listen(); // takes in what the network says, without waiting
    Check outcome() const;

    bool isOpen() const { return fd >= 0 && error == 0; }

    const config::DeviceEntry &device;
    std::optional<config::Problem> problem; // of the address, which is then not tried
    int fd = -1;
    int error = 0;
    bool isLoopback = true;
    std::string from; // this machine's address on the way there
};

} // namespace

static std::string textOf(const Address &address) {
    char text[INET6_ADDRSTRLEN] = "";
    if (address.any.sa_family == AF_INET6)
        inet_ntop(AF_INET6, &address.v6.sin6_addr, text, sizeof text);
    else
        inet_ntop(AF_INET, &address.v4.sin_addr, text, sizeof text);
    return text;
}

// The address and its size; 0 when the text is not an address.
static socklen_t read(const config::DeviceEntry &device, Address &address) {
    address = {};
    const auto port = htons(static_cast<std::uint16_t>(device.port()));
    if (inet_pton(AF_INET, device.ip.c_str(), &address.v4.sin_addr) == 1) {
        address.v4.sin_family = AF_INET;
        address.v4.sin_port = port;
        return sizeof address.v4;
    }
    if (inet_pton(AF_INET6, device.ip.c_str(), &address.v6.sin6_addr) == 1) {
        address.v6.sin6_family = AF_INET6;
        address.v6.sin6_port = port;
        return sizeof address.v6;
    }
    return 0;
}

void Attempt::begin() {
    problem = config::addressProblem(device.ip);
    if (problem)
        return;
    Address to;
    const socklen_t size = read(device, to);
    isLoopback = to.any.sa_family == AF_INET6 ? IN6_IS_ADDR_LOOPBACK(&to.v6.sin6_addr)
                                              : ntohl(to.v4.sin_addr.s_addr) >> 24 == 127;
    fd = socket(to.any.sa_family, SOCK_DGRAM, 0);
    if (fd < 0) {
        error = errno;
        return;
    }
    fcntl(fd, F_SETFD, FD_CLOEXEC);
    fcntl(fd, F_SETFL, O_NONBLOCK);
    askForNetworkErrors(fd, to.any.sa_family);
    const unsigned char noPanels[2] = {};
    if (connect(fd, &to.any, size) != 0 ||
        send(fd, noPanels, device.controlVersion == 1 ? 1 : 2, 0) < 0) {
        error = errno;
        return;
    }
    Address own;
    socklen_t ownSize = sizeof own;
    if (getsockname(fd, &own.any, &ownSize) == 0)
        from = textOf(own);
}

void Attempt::listen() {
    if (!isOpen())
        return;
    char answer[16];
    if (recv(fd, answer, sizeof answer, 0) < 0 && errno != EAGAIN && errno != EINTR)
        error = errno;
}

Check Attempt::outcome() const {
    Check check;
    const bool isV6 = device.ip.find(':') != std::string::npos;
    const std::string shown = config::quote(device.ip.data(), device.ip.size());
    const std::string plain = shown.substr(1, shown.size() - 2);
    check.subject = (isV6 ? "[" + plain + "]" : plain) + ":" + std::to_string(device.port());
    check.verdict = error == 0 && !problem ? Verdict::good : Verdict::bad;
    check.status = ExitStatus::addressFaulty;
    if (problem) {
        check.words = problem->message;
        check.remedy = problem->remedy;
        return check;
    }
    switch (error) {
    case 0:
        check.words = "sent from " + from + "; no error reported";
        break;
    case EINVAL:
        check.words = "a link-local address, which does not say on which network interface";
        check.remedy = "write the light's IPv4 address, or another of its IPv6 addresses";
        break;
    case ECONNREFUSED:
        check.words = "the address is in use, but nothing listens on this port";
        check.remedy = "is it the light's address, and its control version (1 is port 60221, any "
                       "other 60222)? On this machine, panelwall plays the lights";
        break;
    case EHOSTUNREACH:
    case EHOSTDOWN:
        check.words = "nobody has this address on the network";
        check.remedy =
            "is the light switched on, and in the same network? Has its address changed?";
        break;
    case ENETUNREACH:
    case EADDRNOTAVAIL:
        check.words = "there is no route to this address";
        check.remedy = "connect this machine to the lights' network";
        break;
    case EACCES:
    case EPERM:
        check.words = "this machine does not allow sending to it";
        check.remedy = "it is a broadcast address, or blocked by the firewall";
        break;
    default:
        // NOLINTNEXTLINE(concurrency-mt-unsafe): the text is constant or the thread's own
        check.words = std::strerror(error);
    }
    return check;
}

// Until all have been refused, or the deadline.
static void awaitObjections(std::vector<Attempt> &attempts) {
    const bool isNear = std::all_of(attempts.begin(), attempts.end(),
                                    [](const Attempt &attempt) { return attempt.isLoopback; });
    const auto end =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(isNear ? 200 : 3500);
    for (;;) {
        std::vector<pollfd> open;
        for (auto &attempt : attempts) {
            attempt.listen();
            if (attempt.isOpen())
                open.push_back({attempt.fd, POLLIN, 0});
        }
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            end - std::chrono::steady_clock::now());
        if (open.empty() || left.count() <= 0)
            return;
        poll(open.data(), static_cast<nfds_t>(open.size()), static_cast<int>(left.count()));
    }
}

std::vector<Check> tryDevices(const std::vector<config::DeviceEntry> &devices) {
    constexpr std::size_t atOnce = 200; // descriptors are few
    std::vector<Check> checks;
    for (std::size_t first = 0; first < devices.size(); first += atOnce) {
        std::vector<Attempt> attempts;
        for (std::size_t i = first; i < std::min(devices.size(), first + atOnce); ++i) {
            attempts.emplace_back(devices[i]);
            attempts.back().begin();
        }
        awaitObjections(attempts);
        for (const auto &attempt : attempts)
            checks.push_back(attempt.outcome());
    }
    return checks;
}

} // namespace mirrorctl
