#include "tools/lights/address.h"

#include "tools/lights/text.h"

#include <arpa/inet.h>

namespace lights {

std::optional<Endpoint> parseEndpoint(const std::string &ip, int port) {
    Endpoint endpoint;
    const auto networkPort = htons(static_cast<in_port_t>(port));
    if (inet_pton(AF_INET, ip.c_str(), &endpoint.v4.sin_addr) == 1) {
        endpoint.v4.sin_family = AF_INET;
        endpoint.v4.sin_port = networkPort;
        endpoint.length = sizeof endpoint.v4;
        return endpoint;
    }
    if (inet_pton(AF_INET6, ip.c_str(), &endpoint.v6.sin6_addr) == 1) {
        endpoint.v6.sin6_family = AF_INET6;
        endpoint.v6.sin6_port = networkPort;
        endpoint.length = sizeof endpoint.v6;
        return endpoint;
    }
    return std::nullopt;
}

bool isLoopback(const Endpoint &endpoint) {
    return endpoint.any.sa_family == AF_INET ? ntohl(endpoint.v4.sin_addr.s_addr) >> 24 == 127
                                             : IN6_IS_ADDR_LOOPBACK(&endpoint.v6.sin6_addr);
}

std::string ipText(const Endpoint &endpoint) {
    char text[INET6_ADDRSTRLEN] = "";
    if (endpoint.any.sa_family == AF_INET)
        inet_ntop(AF_INET, &endpoint.v4.sin_addr, text, sizeof text);
    else
        inet_ntop(AF_INET6, &endpoint.v6.sin6_addr, text, sizeof text);
    return text;
}

std::string endpointText(const std::string &ip, int port) {
    const bool isV6 = ip.find(':') != std::string::npos;
    return (isV6 ? "[" + ip + "]" : ip) + ":" + std::to_string(port);
}

static bool isAddress(const std::string &text, int family) {
    const auto endpoint = parseEndpoint(text, 0);
    return endpoint && endpoint->any.sa_family == family;
}

// The address without its port and brackets; empty if that leaves no valid address.
static std::string withoutPort(const std::string &text) {
    const auto colon = text.find_last_not_of("0123456789");
    const bool hasPort = colon != std::string::npos && text[colon] == ':';
    std::string address = hasPort ? text.substr(0, colon) : text;
    const bool hasBrackets = address.starts_with('[') && address.ends_with(']');
    if (hasBrackets)
        address = address.substr(1, address.size() - 2);
    return isAddress(address, hasBrackets ? AF_INET6 : AF_INET) ? address : std::string();
}

// What the address is if it does not belong to one host; null if it does.
static const char *groupOf(const Endpoint &endpoint) {
    if (endpoint.any.sa_family == AF_INET6) {
        const in6_addr &address = endpoint.v6.sin6_addr;
        if (IN6_IS_ADDR_UNSPECIFIED(&address))
            return "which stands for no address";
        return IN6_IS_ADDR_MULTICAST(&address) ? "which is a multicast address" : nullptr;
    }
    const auto number = ntohl(endpoint.v4.sin_addr.s_addr);
    if (number == INADDR_ANY)
        return "which stands for no address";
    if (number == INADDR_BROADCAST)
        return "which is the broadcast address";
    return number >> 28 == 14 ? "which is a multicast address" : nullptr;
}

std::optional<AddressError> findAddressError(const std::string &ip) {
    const std::string found = ", found " + quote(ip);
    if (const auto endpoint = parseEndpoint(ip, 0)) {
        if (const char *group = groupOf(*endpoint))
            return AddressError{"expected the address of one light" + found + ", " + group,
                                "write the light's own address; each light is a device"};
        return std::nullopt;
    }
    if (const auto address = withoutPort(ip); !address.empty())
        return AddressError{
            "expected an address without brackets and port" + found,
            "write \"" + address +
                "\"; the port follows from controlVersion (1: 60221, any other: 60222)"};
    if (const auto zone = ip.find('%');
        zone != std::string::npos && isAddress(ip.substr(0, zone), AF_INET6))
        return AddressError{
            "expected an address without a zone" + found,
            "write the light's IPv4 address, or an IPv6 address that needs no zone"};
    return AddressError{
        "expected an IPv4 or IPv6 address in numbers, such as 192.0.2.7 or 2001:db8::7" + found,
        "write the device's address in numbers; names are not looked up"};
}

} // namespace lights
