#include "tools/lights/address.h"
#include "tools/lights/datagram.h"
#include "tools/lights/text.h"
#include "tools/mirrorctl/doctor/doctor.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <optional>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>

namespace mirrorctl {

namespace {

struct DeviceProbe {
    const config::DeviceEntry &device;
    std::optional<lights::AddressError> addressError; // of the address, which is then not tried
    int fd = -1;
    int error = 0;
    bool isLoopback = true;
    std::string from; // this machine's address on the route

    explicit DeviceProbe(const config::DeviceEntry &device); // sends the datagram
    void receive(); // reads a reported network error, without waiting
    Check result() const;
    bool isOpen() const { return fd >= 0 && error == 0; }
};

} // namespace

DeviceProbe::DeviceProbe(const config::DeviceEntry &device_)
    : device(device_), addressError(lights::findAddressError(device.ip)) {
    if (addressError)
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

void DeviceProbe::receive() {
    char answer[16];
    if (isOpen() && recv(fd, answer, sizeof answer, 0) < 0 && errno != EAGAIN && errno != EINTR)
        error = errno;
}

// A network error in words, and its remedy.
static lights::AddressError explain(int error) {
    switch (error) {
    case EINVAL:
        return {"a link-local address, which does not say on which network interface",
                "write the light's IPv4 address, or another of its IPv6 addresses"};
    case ECONNREFUSED:
        return {"the address is in use, but nothing listens on this port",
                "is it the light's address, and its control version (1 is port 60221, any other "
                "60222)? On this machine, panelwall plays the lights"};
    case EHOSTUNREACH:
    case EHOSTDOWN:
        return {"no machine on the network has this address",
                "is the light switched on, and in the same network? Has its address changed?"};
    case ENETUNREACH:
    case EADDRNOTAVAIL:
        return {"there is no route to this address", "connect this machine to the lights' network"};
    case EACCES:
    case EPERM:
        return {"this machine does not allow sending to it",
                "it is a broadcast address, or blocked by the firewall"};
    default:
        return {std::generic_category().message(error), ""};
    }
}

Check DeviceProbe::result() const {
    const std::string shown = lights::quote(device.ip);
    const auto subject = lights::endpointText(shown.substr(1, shown.size() - 2), device.port());
    if (!addressError && error == 0)
        return {Verdict::Good, subject, "sent from " + from + "; no error reported"};
    const auto [finding, remedy] = addressError ? *addressError : explain(error);
    return {Verdict::Bad, subject, finding, remedy, ExitStatus::AddressFaulty};
}

// Waits until every probe has failed, or for the deadline.
static void awaitErrors(std::vector<DeviceProbe> &probes) {
    const bool isNear = std::all_of(probes.begin(), probes.end(),
                                    [](const DeviceProbe &probe) { return probe.isLoopback; });
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::milliseconds(isNear ? 200 : 3500);
    for (;;) {
        std::vector<int> open;
        for (DeviceProbe &probe : probes) {
            probe.receive();
            if (probe.isOpen())
                open.push_back(probe.fd);
        }
        const std::chrono::duration<double> left = end - Clock::now();
        if (open.empty() || left.count() <= 0.0)
            return;
        awaitReadable(open, left.count());
    }
}

std::vector<Check> probeDevices(const std::vector<config::DeviceEntry> &devices) {
    constexpr std::size_t atOnce = 200; // the limit on open descriptors may be low
    std::vector<Check> checks;
    for (std::size_t first = 0; first < devices.size(); first += atOnce) {
        std::vector<DeviceProbe> probes;
        for (std::size_t i = first; i < std::min(devices.size(), first + atOnce); ++i)
            probes.emplace_back(devices[i]);
        awaitErrors(probes);
        for (const DeviceProbe &probe : probes) {
            checks.push_back(probe.result());
            if (probe.fd >= 0)
                close(probe.fd);
        }
    }
    return checks;
}

} // namespace mirrorctl
