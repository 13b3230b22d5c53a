#include "tools/lights/deviceAddress.h"

#include "tools/config/quote.h"

#include <algorithm>
#include <arpa/inet.h>

namespace config {

static bool isV4(const std::string &text) {
    in_addr address;
    return inet_pton(AF_INET, text.c_str(), &address) == 1;
}

static bool isV6(const std::string &text) {
    in6_addr address;
    return inet_pton(AF_INET6, text.c_str(), &address) == 1;
}

static bool isDigits(const std::string &text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// The address in front of a port, or in brackets, or both; empty when there is none of this.
static std::string withoutPort(const std::string &text) {
    const auto colon = text.rfind(':');
    if (text.starts_with('[')) {
        const auto bracket = text.find(']');
        const std::string inside = text.substr(1, bracket - 1);
        const bool endsThere = bracket + 1 == text.size() || bracket + 1 == colon;
        if (bracket == std::string::npos || !endsThere || !isV6(inside))
            return {};
        return bracket > colon || isDigits(text.substr(colon + 1)) ? inside : std::string();
    }
    if (colon == std::string::npos || !isDigits(text.substr(colon + 1)))
        return {};
    const std::string before = text.substr(0, colon);
    return isV4(before) ? before : std::string();
}

// What the address stands for instead of one host; null when it is one host's.
static const char *groupOf(const std::string &text) {
    in_addr v4;
    if (inet_pton(AF_INET, text.c_str(), &v4) == 1) {
        const auto number = ntohl(v4.s_addr);
        if (number == INADDR_ANY)
            return "which stands for no address";
        if (number == INADDR_BROADCAST)
            return "which is the broadcast address";
        return number >> 28 == 14 ? "which is a multicast address" : nullptr;
    }
    in6_addr v6;
    if (inet_pton(AF_INET6, text.c_str(), &v6) != 1)
        return nullptr;
    if (IN6_IS_ADDR_UNSPECIFIED(&v6))
        return "which stands for no address";
    return IN6_IS_ADDR_MULTICAST(&v6) ? "which is a multicast address" : nullptr;
}

std::optional<Problem> addressProblem(const std::string &text) {
    const std::string found = ", found " + quote(text.data(), text.size());
    if (isV4(text) || isV6(text)) {
        if (const char *group = groupOf(text))
            return Problem{"", "expected the address of one light" + found + ", " + group,
                           "write the light's own address; each light is a device"};
        return std::nullopt;
    }
    if (const auto address = withoutPort(text); !address.empty())
        return Problem{"", "expected an address without brackets and port" + found,
                       "write \"" + address +
                           "\"; the port follows from controlVersion (1: 60221, any other: 60222)"};
    if (const auto zone = text.find('%'); zone != std::string::npos && isV6(text.substr(0, zone)))
        return Problem{"", "expected an address without a zone" + found,
                       "write the light's IPv4 address, or an IPv6 address that needs no zone"};
    return Problem{
        "", "expected an IPv4 or IPv6 address in numbers, such as 192.0.2.7 or 2001:db8::7" + found,
        "write the device's address in numbers; names are not looked up"};
}

} // namespace config
