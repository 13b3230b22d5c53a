#include "tools/mirrorctl/server.h"

#include "tools/mirrorctl/waiting.h"

#include <cctype>
#include <cstdio>

namespace mirrorctl {

bool isServerSilent() {
    return isServerSilent(ServerWatch(), 1.0);
}

bool isServerSilent(const ServerWatch &watch, double patience) {
    if (watch.descriptor() >= 0)
        awaitReadable({watch.descriptor()}, patience);
    return watch.state() == ServerWatch::State::opening;
}

std::string aboutServer(const std::string &predicate) {
    std::string name = serverName();
    name.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(name.front())));
    return name + " " + predicate;
}

std::string silenceOfServer() {
    return aboutServer("does not answer. Is it stopped or overloaded?\n");
}

bool tellServerSilence() {
    const bool isSilent = isServerSilent();
    if (isSilent)
        fputs(silenceOfServer().c_str(), stderr);
    return isSilent;
}

} // namespace mirrorctl
