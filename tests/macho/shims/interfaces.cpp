#include "tests/macho/shims/addresses.h"
#include "tests/macho/shims/errors.h"
#include "tests/macho/shims/refuse.h"
#include "tests/macho/shims/system.h"

#include <ifaddrs.h>
#include <list>
#include <memory>
#include <mutex>
#include <net/if.h>

namespace macho {

namespace {

// Has the same layout as on this system, except for the contents of the addresses.
struct DarwinInterface {
    DarwinInterface *next;
    const char *name;
    std::uint32_t flags;
    DarwinAddress *address;
    DarwinAddress *mask;
    DarwinAddress *destination;
    void *data;
};

struct Entry {
    DarwinInterface interface = {};
    std::string name;
    DarwinAddress addresses[3] = {};
};

using List = std::list<Entry>;

std::mutex listsMutex;
std::list<List> handedOut; // and not freed yet

std::uint32_t darwinFlags(unsigned flags) {
    struct Pair {
        unsigned host;
        std::uint32_t darwin;
    };
    constexpr Pair pairs[] = {
        {IFF_UP, 0x1},           {IFF_BROADCAST, 0x2},  {IFF_LOOPBACK, 0x8},
        {IFF_POINTOPOINT, 0x10}, {IFF_RUNNING, 0x40},   {IFF_NOARP, 0x80},
        {IFF_PROMISC, 0x100},    {IFF_ALLMULTI, 0x200}, {IFF_MULTICAST, 0x8000}};
    std::uint32_t darwin = 0;
    for (const Pair &pair : pairs)
        if ((flags & pair.host) != 0)
            darwin |= pair.darwin;
    return darwin;
}

DarwinAddress *translated(const sockaddr *address, DarwinAddress &room) {
    if (address == nullptr)
        return nullptr;
    room = darwinAddress(*address);
    return &room;
}

int shimGetInterfaces(DarwinInterface **result) {
    ifaddrs *host = nullptr;
    if (getifaddrs(&host) != 0)
        return withErrno(-1);
    List list;
    for (const ifaddrs *entry = host; entry != nullptr; entry = entry->ifa_next) {
        Entry &darwin = list.emplace_back();
        darwin.name = std::string(entry->ifa_name) == "lo" ? "lo0" : entry->ifa_name;
        darwin.interface.name = darwin.name.c_str();
        darwin.interface.flags = darwinFlags(entry->ifa_flags);
        darwin.interface.address = translated(entry->ifa_addr, darwin.addresses[0]);
        // A link address has no mask and no destination.
        if (entry->ifa_addr != nullptr && darwin.addresses[0].inet.family != darwinLink) {
            darwin.interface.mask = translated(entry->ifa_netmask, darwin.addresses[1]);
            darwin.interface.destination = translated(entry->ifa_dstaddr, darwin.addresses[2]);
        }
    }
    freeifaddrs(host);
    DarwinInterface *next = nullptr;
    for (auto entry = list.rbegin(); entry != list.rend(); ++entry) {
        entry->interface.next = next;
        next = &entry->interface;
    }
    *result = next;
    const std::lock_guard lock(listsMutex);
    if (!list.empty())
        handedOut.push_back(std::move(list));
    return 0;
}

void shimFreeInterfaces(DarwinInterface *first) {
    const std::lock_guard lock(listsMutex);
    const auto freed = std::erase_if(
        handedOut, [first](const List &list) { return &list.front().interface == first; });
    if (freed == 0)
        refuse("freeifaddrs of a list that was not handed out or is freed already");
}

} // namespace

void addInterfaces(Imports &imports) {
    imports.add(libSystem, "_getifaddrs", shimGetInterfaces);
    imports.add(libSystem, "_freeifaddrs", shimFreeInterfaces);
    imports.unloadChecks.emplace_back([](const Image &) {
        const std::lock_guard lock(listsMutex);
        if (!handedOut.empty())
            refuse("unload with a list of interfaces that was not freed");
    });
}

} // namespace macho
