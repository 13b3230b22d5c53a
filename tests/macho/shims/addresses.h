// Socket addresses of macOS: a length byte, then a family of one byte.
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
    std::uint16_t port; // as on the wire
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

// This system's number of an address family that the library hands in; others are refused.
int familyHere(int darwinFamily);

struct AddressHere {
    sockaddr_storage storage;
    socklen_t length;
};

// Of the `length` bytes at `address`. Nothing when the length is not that of the family: macOS
// answers such a call with EINVAL. The length byte itself need not be set, for macOS fills it in.
std::optional<AddressHere> addressHere(const void *address, socklen_t length);

// The other way, with the length byte set.
DarwinAddress darwinAddress(const sockaddr &address);

} // namespace macho
