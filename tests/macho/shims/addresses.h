// Socket addresses of macOS. They start with a length byte and a family byte.
#pragma once

#include <cstdint>
#include <optional>
#include <sys/socket.h>

namespace macho {

constexpr int darwinInet = 2;
constexpr int darwinLink = 18;
constexpr int darwinInet6 = 30;

struct DarwinAddress4 {
    std::uint8_t length;
    std::uint8_t family;
    std::uint16_t port; // in network byte order
    std::uint32_t address;
    std::uint8_t zeros[8];
};

struct DarwinAddress6 {
    std::uint8_t length;
    std::uint8_t family;
    std::uint16_t port;
    std::uint32_t flow;
    std::uint8_t address[16];
    std::uint32_t scope;
};

struct DarwinLinkAddress {
    std::uint8_t length;
    std::uint8_t family;
    std::uint16_t index;
    std::uint8_t type;
    std::uint8_t nameLength;
    std::uint8_t addressLength;
    std::uint8_t selectorLength;
    std::uint8_t data[12];
};

union DarwinAddress {
    DarwinAddress4 inet;
    DarwinAddress6 inet6;
    DarwinLinkAddress link;
};

// This system's number for a macOS address family; other families are refused.
int hostFamily(int darwinFamily);

struct HostAddress {
    sockaddr_storage storage;
    socklen_t length;
};

// Converts the `length` bytes at `address`. Returns nullopt if the length does not match the
// family: macOS fails such a call with EINVAL. The length byte itself may be unset, since macOS
// sets it.
std::optional<HostAddress> hostAddress(const void *address, socklen_t length);

// The reverse conversion, with the length byte set.
DarwinAddress darwinAddress(const sockaddr &address);

} // namespace macho
