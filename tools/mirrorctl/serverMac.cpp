#include "tools/mirrorctl/server.h"

#include <CoreGraphics/CoreGraphics.h>

namespace mirrorctl {

std::string serverName() {
    return "the window server";
}

std::optional<std::size_t> countDisplays() {
    std::uint32_t count = 0;
    if (CGGetActiveDisplayList(0, nullptr, &count) != kCGErrorSuccess)
        return std::nullopt;
    return count;
}

// There is nothing to watch: a program that loses the window server ends with the session.
struct ServerWatch::Shared {};

ServerWatch::ServerWatch() = default;

ServerWatch::~ServerWatch() = default;

ServerWatch::State ServerWatch::state() const {
    return State::Answering;
}

int ServerWatch::descriptor() const {
    return -1;
}

void ServerWatch::ask() {}

bool ServerWatch::hasPendingRequest() const {
    return false;
}

} // namespace mirrorctl
