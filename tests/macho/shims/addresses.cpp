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
    sockaddr_ll here;
    std::memcpy(&here, &address, sizeof here);
    DarwinLinkAddress link = {};
    link.length = sizeof link;
    link.family = darwinLink;
    link.index = static_cast<std::uint16_t>(here.sll_ifindex);
    link.type = here.sll_hatype == ARPHRD_LOOPBACK ? linkLoopback : linkEthernet;
    if (link.type == linkEthernet) {
        link.addressLength = std::min<std::uint8_t>(here.sll_halen, 6);
        std::memcpy(link.data, here.sll_addr, link.addressLength);
    }
    return link;
}

} // namespace

int familyHere(int darwinFamily) {
    if (darwinFamily == darwinInet)
        return AF_INET;
    if (darwinFamily == darwinInet6)
        return AF_INET6;
    refuse("the address family " + std::to_string(darwinFamily));
}

std::optional<AddressHere> addressHere(const void *address, socklen_t length) {
    AddressHere result = {};
    if (length < 2)
        return std::nullopt;
    const int family = familyHere(static_cast<const std::uint8_t *>(address)[1]);
    if (family == AF_INET) {
        DarwinAddress4 darwin;
        if (length != sizeof darwin)
            return std::nullopt;
        std::memcpy(&darwin, address, sizeof darwin);
        sockaddr_in here = {};
        here.sin_family = AF_INET;
        here.sin_port = darwin.port;
        here.sin_addr.s_addr = darwin.address;
        std::memcpy(&result.storage, &here, sizeof here);
        result.length = sizeof here;
    } else {
        DarwinAddress6 darwin;
        if (length != sizeof darwin)
            return std::nullopt;
        std::memcpy(&darwin, address, sizeof darwin);
        sockaddr_in6 here = {};
        here.sin6_family = AF_INET6;
        here.sin6_port = darwin.port;
        here.sin6_flowinfo = darwin.flow;
        std::memcpy(&here.sin6_addr, darwin.address, sizeof darwin.address);
        here.sin6_scope_id = darwin.scope;
        std::memcpy(&result.storage, &here, sizeof here);
        result.length = sizeof here;
    }
    return result;
}

DarwinAddress darwinAddress(const sockaddr &address) {
    DarwinAddress result = {};
    if (address.sa_family == AF_INET) {
        sockaddr_in here;
        std::memcpy(&here, &address, sizeof here);
        result.inet = {sizeof result.inet, darwinInet, here.sin_port, here.sin_addr.s_addr, {}};
    } else if (address.sa_family == AF_INET6) {
        sockaddr_in6 here;
        std::memcpy(&here, &address, sizeof here);
        result.inet6 = {sizeof result.inet6, darwinInet6, here.sin6_port,
                        here.sin6_flowinfo,  {},          here.sin6_scope_id};
        std::memcpy(result.inet6.address, &here.sin6_addr, sizeof here.sin6_addr);
    } else if (address.sa_family == AF_PACKET) {
        result.link = linkAddress(address);
    } else {
        refuse("an address of this system's family " + std::to_string(address.sa_family));
    }
    return result;
}

} // namespace macho
