// Parses, validates and prints the addresses of lights.
//
// Pure functions, callable from any thread.
#pragma once

#include <netinet/in.h>
#include <optional>
#include <string>
#include <string_view>
#include <sys/socket.h>

namespace lights {

// A socket address of either family, and its port.
struct Endpoint {
    union {
        sockaddr_storage address{};
        sockaddr any;
        sockaddr_in v4;
        sockaddr_in6 v6;
    };
    socklen_t length = 0;

    // Equal for two endpoints exactly when the endpoints are equal.
    std::string_view bytes() const { return {reinterpret_cast<const char *>(&any), length}; }
};

// Parses an address of either family. Accepts only four decimal numbers without leading zeros or a
// plain IPv6 address, since programs disagree about shorthands such as 127.1 and octal numbers.
std::optional<Endpoint> parseEndpoint(const std::string &ip, int port);

bool isLoopback(const Endpoint &endpoint); // 127.0.0.0/8 or ::1

// "127.0.0.1" or "::1"
std::string ipText(const Endpoint &endpoint);

// "127.0.0.1:60221" or "[::1]:60221"; the address may be any text.
std::string endpointText(const std::string &ip, int port);

// What is wrong with an address, and how to fix it; one line each.
struct AddressError {
    std::string message;
    std::string fix;
};

// Nothing for a numeric address of one host. The library reports none of these errors; the device
// just stays dark.
std::optional<AddressError> findAddressError(const std::string &ip);

} // namespace lights
