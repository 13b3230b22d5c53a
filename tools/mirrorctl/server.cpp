#include "tools/mirrorctl/server.h"

#include "tools/mirrorctl/waiting.h"

#include <cctype>
#include <cstdio>

namespace mirrorctl {

std::string serverSentence(const std::string &predicate) {
    std::string name = serverName();
    name.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(name.front())));
    return name + " " + predicate;
}

std::string silentServerLine() {
    return serverSentence("does not answer. Is it stopped or overloaded?\n");
}

bool reportSilentServer() {
    if (!ServerWatch().isSilentFor(1.0))
        return false;
    std::fputs(silentServerLine().c_str(), stderr);
    return true;
}

bool ServerWatch::isSilentFor(double seconds) const {
    if (descriptor() >= 0)
        awaitReadable({descriptor()}, seconds);
    return state() == State::Opening;
}

} // namespace mirrorctl
