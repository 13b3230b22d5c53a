#include "tests/macho/shims/addresses.h"
#include "tests/macho/shims/errors.h"
#include "tests/macho/shims/refuse.h"
#include "tests/macho/shims/system.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <atomic>
#include <cstdarg>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

namespace macho {

namespace {

constexpr int darwinDatagram = 2;
constexpr int darwinSocketLevel = 0xffff;
constexpr int darwinBroadcast = 0x20;
constexpr int darwinReceiveTimeout = 0x1006;
constexpr int darwinSetFlags = 4;
constexpr int darwinNonBlocking = 4;

struct DarwinTime {
    std::int64_t seconds;
    std::int32_t microseconds;
    std::int32_t padding;
};
static_assert(sizeof(DarwinTime) == 16);

// The descriptors that the library has open.
constexpr std::size_t maxDescriptors = 65536;
std::array<std::atomic<bool>, maxDescriptors> isOpen;

void checkOpen(const char *call, int fd) {
    if (fd >= 0 && (static_cast<std::size_t>(fd) >= maxDescriptors || !isOpen[fd]))
        refuse(std::string(call) + " with descriptor " + std::to_string(fd) +
               ", which the library has not opened or has closed");
}

void checkFlags(const char *call, int flags) {
    if (flags != 0)
        refuse(std::string(call) + " with the flags " + std::to_string(flags));
}

int shimSocket(int family, int type, int protocol) {
    const int familyNumber = hostFamily(family);
    if (type != darwinDatagram || protocol != 0)
        refuse("socket of the type " + std::to_string(type) + " and the protocol " +
               std::to_string(protocol));
    const int fd = socket(familyNumber, SOCK_DGRAM, 0);
    if (fd >= static_cast<int>(maxDescriptors))
        refuse("more descriptors than the shims can count");
    if (fd >= 0)
        isOpen[fd] = true;
    return withErrno(fd);
}

int shimClose(int fd) {
    checkOpen("close", fd);
    if (fd >= 0)
        isOpen[fd] = false;
    return withErrno(close(fd));
}

int shimBind(int fd, const void *address, socklen_t length) {
    checkOpen("bind", fd);
    const auto host = hostAddress(address, length);
    if (!host)
        return failWith(darwinEinval);
    return withErrno(bind(fd, reinterpret_cast<const sockaddr *>(&host->storage), host->length));
}

ssize_t shimSendTo(int fd, const void *bytes, std::size_t length, int flags, const void *to,
                   socklen_t toLength) {
    checkOpen("sendto", fd);
    checkFlags("sendto", flags);
    const auto host = hostAddress(to, toLength);
    if (!host)
        return failWith(darwinEinval);
    return withErrno(sendto(fd, bytes, length, 0,
                            reinterpret_cast<const sockaddr *>(&host->storage), host->length));
}

ssize_t shimReceiveFrom(int fd, void *bytes, std::size_t length, int flags, void *from,
                        socklen_t *fromLength) {
    checkOpen("recvfrom", fd);
    checkFlags("recvfrom", flags);
    if (from == nullptr || fromLength == nullptr)
        refuse("recvfrom without room for the sender");
    sockaddr_storage sender = {};
    socklen_t senderLength = sizeof sender;
    const ssize_t received =
        recvfrom(fd, bytes, length, 0, reinterpret_cast<sockaddr *>(&sender), &senderLength);
    if (received < 0)
        return withErrno(received);
    const DarwinAddress darwin = darwinAddress(reinterpret_cast<const sockaddr &>(sender));
    std::memcpy(from, &darwin, std::min<std::size_t>(*fromLength, darwin.inet.length));
    *fromLength = darwin.inet.length;
    return received;
}

int setReceiveTimeout(int fd, const void *value, socklen_t length) {
    DarwinTime darwin;
    if (length != sizeof darwin)
        refuse("a receive time-out of " + std::to_string(length) + " bytes");
    std::memcpy(&darwin, value, sizeof darwin);
    if (darwin.seconds < 0 || darwin.microseconds < 0 || darwin.microseconds >= 1000000)
        return failWith(darwinEdom);
    const timeval host = {darwin.seconds, darwin.microseconds};
    return withErrno(setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &host, sizeof host));
}

int shimSetOption(int fd, int level, int option, const void *value, socklen_t length) {
    checkOpen("setsockopt", fd);
    if (level == darwinSocketLevel && option == darwinReceiveTimeout)
        return setReceiveTimeout(fd, value, length);
    if (level != darwinSocketLevel || option != darwinBroadcast || length != sizeof(int))
        refuse("the socket option " + std::to_string(option) + " of the level " +
               std::to_string(level) + " with " + std::to_string(length) + " bytes");
    return withErrno(setsockopt(fd, SOL_SOCKET, SO_BROADCAST, value, length));
}

int shimControl(int fd, int command, ...) {
    va_list arguments;
    va_start(arguments, command);
    const int flags = va_arg(arguments, int);
    va_end(arguments);
    if (command != darwinSetFlags || flags != darwinNonBlocking)
        refuse("fcntl with the command " + std::to_string(command) + " and the flags " +
               std::to_string(flags));
    return withErrno(fcntl(fd, F_SETFL, O_NONBLOCK));
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
    imports.add(libSystem, "_socket", shimSocket);
    imports.add(libSystem, "_close", shimClose);
    imports.add(libSystem, "_bind", shimBind);
    imports.add(libSystem, "_sendto", shimSendTo);
    imports.add(libSystem, "_recvfrom", shimReceiveFrom);
    imports.add(libSystem, "_setsockopt", shimSetOption);
    imports.add(libSystem, "_fcntl", shimControl);
    imports.add(libSystem, "_inet_pton", shimParseAddress);
    imports.add(libSystem, "_inet_ntop", shimAddressText);
}

} // namespace macho
