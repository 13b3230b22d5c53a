#include "tools/lights/address.h"
#include "tools/lights/datagram.h"
#include "tools/lights/text.h"
#include "tools/mirrorctl/doctor/doctor.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <netinet/in.h>
#include <optional>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace mirrorctl {

namespace {

struct Attempt {
    const config::DeviceEntry &device;
    std::optional<lights::AddressFault> fault = {}; // of the address, which is then not tried
    int fd = -1;
    int error = 0;
    bool isLoopback = true;
    std::string from = {}; // this machine's address on the way there

    void begin();
    void receive(); // takes in what the network reports, without waiting
    Check result() const;
    bool isOpen() const { return fd >= 0 && error == 0; }
};

} // namespace

void Attempt::begin() {
    fault = lights::findAddressFault(device.ip);
    if (fault)
        return;
    const auto to = lights::parseEndpoint(device.ip, device.port()).value();
    isLoopback = lights::isLoopback(to);
    fd = socket(to.any.sa_family, SOCK_DGRAM, 0);
    if (fd < 0) {
        error = errno;
        return;
    }
    fcntl(fd, F_SETFD, FD_CLOEXEC);
    fcntl(fd, F_SETFL, O_NONBLOCK);
    requestNetworkErrors(fd, to.any.sa_family);
    const std::vector<unsigned char> noPanels(
        lights::datagramSize(lights::layoutOf(device.controlVersion), 0));
    if (connect(fd, &to.any, to.length) != 0 || send(fd, noPanels.data(), noPanels.size(), 0) < 0) {
        error = errno;
        return;
    }
    lights::Endpoint own;
    own.length = sizeof own.address;
    if (getsockname(fd, &own.any, &own.length) == 0)
        from = lights::ipText(own);
}

void Attempt::receive() {
    char answer[16];
    if (isOpen() && recv(fd, answer, sizeof answer, 0) < 0 && errno != EAGAIN && errno != EINTR)
        error = errno;
}

Check Attempt::result() const {
    Check check;
    const std::string shown = lights::quote(device.ip);
    check.subject = lights::endpointText(shown.substr(1, shown.size() - 2), device.port());
    check.verdict = error == 0 && !fault ? Verdict::Good : Verdict::Bad;
    check.status = ExitStatus::AddressFaulty;
    if (fault) {
        check.finding = fault->message;
        check.remedy = fault->fix;
        return check;
    }
    switch (error) {
    case 0:
        check.finding = "sent from " + from + "; no error reported";
        break;
    case EINVAL:
        check.finding = "a link-local address, which does not say on which network interface";
        check.remedy = "write the light's IPv4 address, or another of its IPv6 addresses";
        break;
    case ECONNREFUSED:
        check.finding = "the address is in use, but nothing listens on this port";
        check.remedy = "is it the light's address, and its control version (1 is port 60221, any "
                       "other 60222)? On this machine, panelwall plays the lights";
        break;
    case EHOSTUNREACH:
    case EHOSTDOWN:
        check.finding = "nobody has this address on the network";
        check.remedy =
            "is the light switched on, and in the same network? Has its address changed?";
        break;
    case ENETUNREACH:
    case EADDRNOTAVAIL:
        check.finding = "there is no route to this address";
        check.remedy = "connect this machine to the lights' network";
        break;
    case EACCES:
    case EPERM:
        check.finding = "this machine does not allow sending to it";
        check.remedy = "it is a broadcast address, or blocked by the firewall";
        break;
    default:
        // NOLINTNEXTLINE(concurrency-mt-unsafe): the text is constant or the thread's own
        check.finding = std::strerror(error);
    }
    return check;
}

// Until every one has failed, or the deadline.
static void awaitErrors(std::vector<Attempt> &attempts) {
    const bool isNear = std::all_of(attempts.begin(), attempts.end(),
                                    [](const Attempt &attempt) { return attempt.isLoopback; });
    const auto end =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(isNear ? 200 : 3500);
    for (;;) {
        std::vector<pollfd> open;
        for (Attempt &attempt : attempts) {
            attempt.receive();
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
    constexpr std::size_t atOnce = 200; // a process may have few descriptors
    std::vector<Check> checks;
    for (std::size_t first = 0; first < devices.size(); first += atOnce) {
        std::vector<Attempt> attempts;
        for (std::size_t i = first; i < std::min(devices.size(), first + atOnce); ++i)
            attempts.push_back({devices[i]});
        for (Attempt &attempt : attempts)
            attempt.begin();
        awaitErrors(attempts);
        for (const Attempt &attempt : attempts) {
            checks.push_back(attempt.result());
            if (attempt.fd >= 0)
                close(attempt.fd);
        }
    }
    return checks;
}

} // namespace mirrorctl
