#include "tools/lights/loopbackAddress.h"

#include "tools/config/quote.h"

#include <arpa/inet.h>
#include <cstring>
#include <map>
#include <netinet/in.h>

namespace panelwall {

std::optional<Endpoint> parseEndpoint(const std::string &ip, int port) {
    Endpoint endpoint;
    in_addr four{};
    in6_addr six{};
    if (inet_pton(AF_INET, ip.c_str(), &four) == 1) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<in_port_t>(port));
        address.sin_addr = four;
        endpoint.length = sizeof address;
        std::memcpy(&endpoint.address, &address, sizeof address);
        return endpoint;
    }
    if (inet_pton(AF_INET6, ip.c_str(), &six) == 1) {
        sockaddr_in6 address{};
        address.sin6_family = AF_INET6;
        address.sin6_port = htons(static_cast<in_port_t>(port));
        address.sin6_addr = six;
        endpoint.length = sizeof address;
        std::memcpy(&endpoint.address, &address, sizeof address);
        return endpoint;
    }
    return std::nullopt;
}

static bool isLoopback(const Endpoint &endpoint) {
    if (endpoint.address.ss_family == AF_INET) {
        sockaddr_in address;
        std::memcpy(&address, &endpoint.address, sizeof address);
        return ntohl(address.sin_addr.s_addr) >> 24 == 127;
    }
    sockaddr_in6 address;
    std::memcpy(&address, &endpoint.address, sizeof address);
    return IN6_IS_ADDR_LOOPBACK(&address.sin6_addr);
}

std::string nameDevice(const config::Document &document, std::size_t index) {
    const config::DeviceEntry &device = document.devices[index];
    return "device " + std::to_string(index) + " at " +
           config::quote(device.ip.data(), device.ip.size()) + ", UDP port " +
           std::to_string(device.port());
}

std::vector<Endpoint> findEndpoints(const config::Document &document,
                                    std::vector<config::Problem> &problems, Reach reach) {
    std::vector<Endpoint> endpoints;
    std::map<std::string, std::size_t> taken;
    for (std::size_t i = 0; i < document.devices.size(); ++i) {
        const auto report = [&](const std::string &text) {
            problems.push_back(
                {"/devices/" + std::to_string(i) + "/ip", nameDevice(document, i) + ": " + text});
        };
        const auto endpoint = parseEndpoint(document.devices[i].ip, document.devices[i].port());
        if (!endpoint) {
            report("the address does not parse; write four decimal numbers such as 127.0.0.2, or "
                   "::1");
            continue;
        }
        if (reach == Reach::loopback && !isLoopback(*endpoint)) {
            report("not a loopback address; the wall listens on this machine only, so give the "
                   "device an address in 127.0.0.0/8, or ::1");
            continue;
        }
        const std::string key(reinterpret_cast<const char *>(&endpoint->address), endpoint->length);
        const auto [earlier, isNew] = taken.emplace(key, i);
        if (!isNew) {
            report("device " + std::to_string(earlier->second) +
                   " has the same address and port; give each device an address of its own, such "
                   "as 127.0.0.2, 127.0.0.3 and so on");
            continue;
        }
        endpoints.push_back(*endpoint);
    }
    return endpoints;
}

} // namespace panelwall
