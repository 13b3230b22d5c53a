// The socket addresses of the wall's devices: loopback, and no two alike.
#pragma once

#include "tools/config/configDocument.h"

#include <optional>
#include <string>
#include <sys/socket.h>
#include <vector>

namespace panelwall {

struct Endpoint {
    sockaddr_storage address{};
    socklen_t length = 0;
};

// An address of either family as text. Anything that is not four decimal numbers or a plain IPv6
// address does not parse: shorthands such as 127.1 and octal numbers are read differently by
// different programs.
std::optional<Endpoint> parseEndpoint(const std::string &ip, int port);

// Which addresses will do: loopback (127.0.0.0/8 or ::1), or any.
enum class Reach { loopback, anywhere };

// The endpoint of every device, in order. Appends a problem for each device whose address does not
// parse, is out of reach, or has been taken with its port by a device before. The endpoints are
// complete exactly when no problem was found.
std::vector<Endpoint> findEndpoints(const config::Document &document,
                                    std::vector<config::Problem> &problems,
                                    Reach reach = Reach::loopback);

// How messages name a device: its number, its address as quoted text, and its UDP port.
std::string nameDevice(const config::Document &document, std::size_t index);

} // namespace panelwall
