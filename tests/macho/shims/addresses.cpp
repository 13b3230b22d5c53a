#include "tests/macho/shims/addresses.h"
#include "tests/macho/shims/refuse.h"

#include <algorithm>
#include <cstring>
#include <linux/if_packet.h>
#include <net/if_arp.h>
#include <netinet/in.h>

namespace macho {

static_assert(sizeof(DarwinAddress4) == 16 && sizeof(DarwinAddress6) == 28 &&
              sizeof(DarwinLinkAddress) == 20);

namespace {

constexpr std::uint8_t linkEthernet = 6;
constexpr std::uint8_t linkLoopback = 24;

DarwinLinkAddress linkAddress(const sockaddr &address) {
    sockaddr_ll host;
    std::memcpy(&host, &address, sizeof host);
    DarwinLinkAddress link = {};
    link.length = sizeof link;
    link.family = darwinLink;
    link.index = static_cast<std::uint16_t>(host.sll_ifindex);
    link.type = host.sll_hatype == ARPHRD_LOOPBACK ? linkLoopback : linkEthernet;
    if (link.type == linkEthernet) {
        link.addressLength = std::min<std::uint8_t>(host.sll_halen, 6);
        std::memcpy(link.data, host.sll_addr, link.addressLength);
    }
    return link;
}

} // namespace

int hostFamily(int darwinFamily) {
    if (darwinFamily == darwinInet)
        return AF_INET;
    if (darwinFamily == darwinInet6)
        return AF_INET6;
    refuse("the address family " + std::to_string(darwinFamily));
}

std::optional<HostAddress> hostAddress(const void *address, socklen_t length) {
    HostAddress result = {};
    if (length < 2)
        return std::nullopt;
    const int family = hostFamily(static_cast<const std::uint8_t *>(address)[1]);
    if (family == AF_INET) {
        DarwinAddress4 darwin;
        if (length != sizeof darwin)
            return std::nullopt;
        std::memcpy(&darwin, address, sizeof darwin);
        sockaddr_in host = {};
        host.sin_family = AF_INET;
        host.sin_port = darwin.port;
        host.sin_addr.s_addr = darwin.address;
        std::memcpy(&result.storage, &host, sizeof host);
        result.length = sizeof host;
    } else {
        DarwinAddress6 darwin;
        if (length != sizeof darwin)
            return std::nullopt;
        std::memcpy(&darwin, address, sizeof darwin);
        sockaddr_in6 host = {};
        host.sin6_family = AF_INET6;
        host.sin6_port = darwin.port;
        host.sin6_flowinfo = darwin.flow;
        std::memcpy(&host.sin6_addr, darwin.address, sizeof darwin.address);
        host.sin6_scope_id = darwin.scope;
        std::memcpy(&result.storage, &host, sizeof host);
        result.length = sizeof host;
    }
    return result;
}

DarwinAddress darwinAddress(const sockaddr &address) {
    DarwinAddress result = {};
    if (address.sa_family == AF_INET) {
        sockaddr_in host;
        std::memcpy(&host, &address, sizeof host);
        result.inet = {sizeof result.inet, darwinInet, host.sin_port, host.sin_addr.s_addr, {}};
    } else if (address.sa_family == AF_INET6) {
        sockaddr_in6 host;
        std::memcpy(&host, &address, sizeof host);
        result.inet6 = {sizeof result.inet6, darwinInet6, host.sin6_port,
                        host.sin6_flowinfo,  {},          host.sin6_scope_id};
        std::memcpy(result.inet6.address, &host.sin6_addr, sizeof host.sin6_addr);
    } else if (address.sa_family == AF_PACKET) {
        result.link = linkAddress(address);
    } else {
        refuse("an address of this system's family " + std::to_string(address.sa_family));
    }
    return result;
}

} // namespace macho
