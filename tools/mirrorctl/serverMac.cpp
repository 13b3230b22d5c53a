#include "tools/mirrorctl/server.h"

namespace mirrorctl {

std::string serverName() {
    return "the window server";
}

std::string noDisplayHint() {
    return "  Is a user logged in at the screen?\n";
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
