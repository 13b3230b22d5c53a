#include "tests/macho/shims/addresses.h"
#include "tests/macho/shims/descriptors.h"
#include "tests/macho/shims/errors.h"
#include "tests/macho/shims/flags.h"
#include "tests/macho/shims/refuse.h"
#include "tests/macho/shims/system.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstring>
#include <netdb.h>
#include <netinet/tcp.h>
#include <string>
#include <sys/socket.h>

namespace macho {

namespace {

// Apple's sys/socket.h.
constexpr int darwinStream = 1;
constexpr int darwinDatagram = 2;
constexpr int darwinSocketLevel = 0xffff;
constexpr int darwinReceiveTimeout = 0x1006;
constexpr int darwinSendTimeout = 0x1005;
constexpr int darwinTimestamp = 2; // as the type of a control message
constexpr int darwinTruncated = 0x10;
constexpr int darwinIpv6Only = 27;          // Apple's netinet6/in6.h
constexpr int darwinMulticastInterface = 9; // Apple's netinet/in.h

struct Number {
    int host;
    int darwin;
};

constexpr Number socketOptions[] = {
    {SO_REUSEADDR, 0x4}, {SO_BROADCAST, 0x20}, {SO_TIMESTAMP, 0x400}};
constexpr Flag messageFlags[] = {{MSG_PEEK, 0x2}, {MSG_DONTWAIT, 0x80}};

// Apple's netdb.h.
constexpr Flag lookupFlags[] = {{AI_NUMERICHOST, 0x4}};
constexpr Flag nameFlags[] = {{NI_NUMERICHOST, 0x2}, {NI_NUMERICSERV, 0x8}};
constexpr Number lookupErrors[] = {{EAI_FAMILY, 5}, {EAI_NONAME, 8}, {EAI_SERVICE, 9}};

int shimSocket(int family, int type, int protocol) {
    const int familyNumber = hostFamily(family);
    const bool isStream = type == darwinStream && (protocol == 0 || protocol == IPPROTO_TCP);
    if (!isStream && (type != darwinDatagram || protocol != 0))
        refuse("socket of the type " + std::to_string(type) + " and the protocol " +
               std::to_string(protocol));
    return adoptDescriptor(socket(familyNumber, isStream ? SOCK_STREAM : SOCK_DGRAM, protocol));
}

template <auto function> int withAddress(int fd, const void *address, socklen_t length) {
    checkOpen("bind or connect", fd);
    const auto host = hostAddress(address, length);
    if (!host)
        return failWith(darwinEinval);
    return withErrno(
        function(fd, reinterpret_cast<const sockaddr *>(&host->storage), host->length));
}

// Copies as much of the address as there is room for.
void giveAddress(const sockaddr_storage &address, void *room, socklen_t *length) {
    const DarwinAddress darwin = darwinAddress(reinterpret_cast<const sockaddr &>(address));
    std::memcpy(room, &darwin, std::min<std::size_t>(*length, darwin.inet.length));
    *length = darwin.inet.length;
}

template <auto function> int findAddress(int fd, void *address, socklen_t *length) {
    checkOpen("getsockname or getpeername", fd);
    sockaddr_storage host = {};
    socklen_t hostLength = sizeof host;
    const int result = function(fd, reinterpret_cast<sockaddr *>(&host), &hostLength);
    if (result != 0)
        return withErrno(result);
    giveAddress(host, address, length);
    return 0;
}

int shimListen(int fd, int backlog) {
    checkOpen("listen", fd);
    return withErrno(listen(fd, backlog));
}

int shimAccept(int fd, const void *address, const socklen_t *) {
    checkOpen("accept", fd);
    if (address != nullptr)
        refuse("accept with an address");
    return adoptDescriptor(accept(fd, nullptr, nullptr));
}

int shimShutdown(int fd, int how) {
    checkOpen("shutdown", fd);
    return withErrno(shutdown(fd, how)); // the same three numbers
}

ssize_t shimSend(int fd, const void *bytes, std::size_t length, int flags) {
    checkOpen("send", fd);
    return withErrno(send(fd, bytes, length, hostFlags("send", messageFlags, flags)));
}

ssize_t shimSendTo(int fd, const void *bytes, std::size_t length, int flags, const void *to,
                   socklen_t toLength) {
    if (to == nullptr && toLength == 0)
        return shimSend(fd, bytes, length, flags);
    checkOpen("sendto", fd);
    const int sendFlags = hostFlags("sendto", messageFlags, flags);
    const auto host = hostAddress(to, toLength);
    if (!host)
        return failWith(darwinEinval);
    return withErrno(sendto(fd, bytes, length, sendFlags,
                            reinterpret_cast<const sockaddr *>(&host->storage), host->length));
}

ssize_t shimReceive(int fd, void *bytes, std::size_t length, int flags) {
    checkOpen("recv", fd);
    return withErrno(recv(fd, bytes, length, hostFlags("recv", messageFlags, flags)));
}

ssize_t shimReceiveFrom(int fd, void *bytes, std::size_t length, int flags, void *from,
                        socklen_t *fromLength) {
    checkOpen("recvfrom", fd);
    if (from == nullptr || fromLength == nullptr)
        refuse("recvfrom without room for the sender");
    sockaddr_storage sender = {};
    socklen_t senderLength = sizeof sender;
    const ssize_t received = recvfrom(fd, bytes, length, hostFlags("recvfrom", messageFlags, flags),
                                      reinterpret_cast<sockaddr *>(&sender), &senderLength);
    if (received < 0)
        return withErrno(received);
    giveAddress(sender, from, fromLength);
    return received;
}

struct DarwinMessage {
    void *name;
    socklen_t nameLength;
    iovec *parts;
    int partCount;
    void *control;
    socklen_t controlLength;
    int flags;
};
static_assert(sizeof(DarwinMessage) == 48);

struct DarwinStamp {
    socklen_t length;
    int level;
    int type;
    std::uint8_t time[sizeof(DarwinTime)]; // not aligned to eight bytes
};
static_assert(sizeof(DarwinStamp) == 28);

// Control messages are a datagram's time of arrival, or none.
ssize_t shimReceiveMessage(int fd, DarwinMessage *darwin, int flags) {
    checkOpen("recvmsg", fd);
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(timeval))];
    sockaddr_storage sender = {};
    msghdr host = {};
    host.msg_name = &sender;
    host.msg_namelen = sizeof sender;
    host.msg_iov = darwin->parts;
    host.msg_iovlen = static_cast<std::size_t>(darwin->partCount);
    host.msg_control = control;
    host.msg_controllen = sizeof control;
    const ssize_t received = recvmsg(fd, &host, hostFlags("recvmsg", messageFlags, flags));
    if (received < 0)
        return withErrno(received);
    if (darwin->name != nullptr)
        giveAddress(sender, darwin->name, &darwin->nameLength);
    darwin->flags = (host.msg_flags & MSG_TRUNC) != 0 ? darwinTruncated : 0;
    const cmsghdr *entry = CMSG_FIRSTHDR(&host);
    if (entry == nullptr || darwin->controlLength == 0) {
        darwin->controlLength = 0;
        return received;
    }
    if (entry->cmsg_level != SOL_SOCKET || entry->cmsg_type != SCM_TIMESTAMP)
        refuse("a control message of this system's type " + std::to_string(entry->cmsg_type));
    if (darwin->controlLength < sizeof(DarwinStamp))
        refuse("room of " + std::to_string(darwin->controlLength) + " bytes for a time of arrival");
    timeval arrival;
    std::memcpy(&arrival, CMSG_DATA(entry), sizeof arrival);
    const DarwinTime time = darwinTime(arrival);
    DarwinStamp stamp = {sizeof stamp, darwinSocketLevel, darwinTimestamp, {}};
    std::memcpy(stamp.time, &time, sizeof time);
    std::memcpy(darwin->control, &stamp, sizeof stamp);
    darwin->controlLength = sizeof stamp;
    return received;
}

int setTimeout(int fd, int option, const void *value, socklen_t length) {
    DarwinTime darwin;
    if (length != sizeof darwin)
        refuse("a time-out of " + std::to_string(length) + " bytes");
    std::memcpy(&darwin, value, sizeof darwin);
    if (darwin.seconds < 0 || darwin.microseconds < 0 || darwin.microseconds >= 1000000)
        return failWith(darwinEdom);
    const timeval host = hostTime(darwin);
    return withErrno(setsockopt(fd, SOL_SOCKET, option, &host, sizeof host));
}

int shimSetOption(int fd, int level, int option, const void *value, socklen_t length) {
    checkOpen("setsockopt", fd);
    if (level == darwinSocketLevel && option == darwinReceiveTimeout)
        return setTimeout(fd, SO_RCVTIMEO, value, length);
    if (level == darwinSocketLevel && option == darwinSendTimeout)
        return setTimeout(fd, SO_SNDTIMEO, value, length);
    if (level == IPPROTO_TCP && option == TCP_NODELAY && length == sizeof(int))
        return withErrno(setsockopt(fd, level, option, value, length)); // the same numbers
    if (level == IPPROTO_IPV6 && option == darwinIpv6Only && length == sizeof(int))
        return withErrno(setsockopt(fd, level, IPV6_V6ONLY, value, length));
    if (level == IPPROTO_IP && option == darwinMulticastInterface && length == sizeof(in_addr))
        return withErrno(setsockopt(fd, level, IP_MULTICAST_IF, value, length));
    for (const Number &known : socketOptions)
        if (level == darwinSocketLevel && option == known.darwin && length == sizeof(int))
            return withErrno(setsockopt(fd, SOL_SOCKET, known.host, value, length));
    refuse("the socket option " + std::to_string(option) + " of the level " +
           std::to_string(level) + " with " + std::to_string(length) + " bytes");
}

// Apple's netdb.h: the name stands before the address.
struct DarwinLookup {
    int flags;
    int family;
    int type;
    int protocol;
    socklen_t length;
    char *name;
    void *address;
    DarwinLookup *next;
};
static_assert(sizeof(DarwinLookup) == 48);

struct LookupEntry {
    DarwinLookup lookup;
    DarwinAddress address;
};

int darwinLookupError(int error) {
    for (const Number &known : lookupErrors)
        if (known.host == error)
            return known.darwin;
    refuse("an address look-up that fails with " + std::string(gai_strerror(error)));
}

// Finds one address, which is all that numbers mean.
int shimLookUp(const char *node, const char *service, const DarwinLookup *hints,
               DarwinLookup **result) {
    if (hints == nullptr || hints->type != darwinStream)
        refuse("an address look-up for something else than streams");
    addrinfo wanted = {};
    wanted.ai_flags = hostFlags("getaddrinfo", lookupFlags, hints->flags);
    wanted.ai_family = hints->family == 0 ? AF_UNSPEC : hostFamily(hints->family);
    wanted.ai_socktype = SOCK_STREAM;
    if ((wanted.ai_flags & AI_NUMERICHOST) == 0)
        refuse("an address look-up of a name");
    addrinfo *found = nullptr;
    if (const int error = getaddrinfo(node, service, &wanted, &found))
        return darwinLookupError(error);
    if (found->ai_next != nullptr)
        refuse("an address look-up with several results");
    auto *entry = new LookupEntry{};
    entry->address = darwinAddress(*found->ai_addr);
    const bool isInet = found->ai_family == AF_INET;
    freeaddrinfo(found);
    entry->lookup = {0,
                     isInet ? darwinInet : darwinInet6,
                     darwinStream,
                     IPPROTO_TCP,
                     entry->address.inet.length,
                     nullptr,
                     &entry->address,
                     nullptr};
    *result = &entry->lookup;
    return 0;
}

void shimFreeLookup(DarwinLookup *first) {
    delete reinterpret_cast<LookupEntry *>(first);
}

int shimNameOf(const void *address, socklen_t length, char *name, socklen_t nameLength,
               char *service, socklen_t serviceLength, int flags) {
    const auto host = hostAddress(address, length);
    if (!host)
        return darwinLookupError(EAI_FAMILY);
    const int error =
        getnameinfo(reinterpret_cast<const sockaddr *>(&host->storage), host->length, name,
                    nameLength, service, serviceLength, hostFlags("getnameinfo", nameFlags, flags));
    return error == 0 ? 0 : darwinLookupError(error);
}

int shimParseAddress(int family, const char *text, void *address) {
    return withErrno(inet_pton(hostFamily(family), text, address));
}

const char *shimAddressText(int family, const void *address, char *text, socklen_t length) {
    const char *result = inet_ntop(hostFamily(family), address, text, length);
    if (result == nullptr)
        takeErrno();
    return result;
}

} // namespace

void addSockets(Imports &imports) {
    imports.add(libSystem, "_accept", shimAccept);
    imports.add(libSystem, "_bind", withAddress<bind>);
    imports.add(libSystem, "_connect", withAddress<connect>);
    imports.add(libSystem, "_freeaddrinfo", shimFreeLookup);
    imports.add(libSystem, "_getaddrinfo", shimLookUp);
    imports.add(libSystem, "_getnameinfo", shimNameOf);
    imports.add(libSystem, "_getpeername", findAddress<getpeername>);
    imports.add(libSystem, "_getsockname", findAddress<getsockname>);
    imports.add(libSystem, "_inet_ntop", shimAddressText);
    imports.add(libSystem, "_inet_pton", shimParseAddress);
    imports.add(libSystem, "_listen", shimListen);
    imports.add(libSystem, "_recv", shimReceive);
    imports.add(libSystem, "_recvfrom", shimReceiveFrom);
    imports.add(libSystem, "_recvmsg", shimReceiveMessage);
    imports.add(libSystem, "_send", shimSend);
    imports.add(libSystem, "_sendto", shimSendTo);
    imports.add(libSystem, "_setsockopt", shimSetOption);
    imports.add(libSystem, "_shutdown", shimShutdown);
    imports.add(libSystem, "_socket", shimSocket);
}

} // namespace macho
