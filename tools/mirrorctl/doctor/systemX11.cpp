#include "tools/mirrorctl/doctor/system.h"
#include "tools/mirrorctl/doctor/xChecks.h"
#include "tools/mirrorctl/doctor/xGreeting.h"
#include "tools/mirrorctl/xServer.h"

#include <cstdlib>
#include <netinet/in.h>
#include <sys/socket.h>

namespace mirrorctl {

static std::string displayVariable() {
    const char *value = std::getenv("DISPLAY");
    return value ? value : "";
}

static Check missing(const std::string &words, const std::string &remedy) {
    return {Verdict::bad, "X server", words, remedy, ExitStatus::displayMissing};
}

static Check missingName() {
    if (isWaylandSession())
        return missing("the variable DISPLAY is not set: this is a Wayland session without an X "
                       "server, and its screen cannot be mirrored",
                       "log out, and choose an X11 session where you log in");
    return missing("the variable DISPLAY is not set, so there is none to ask",
                   "run this in the desktop session, or set DISPLAY to its server's name, such as "
                   ":0, and XAUTHORITY to its key file");
}

static Check refusal(const std::string &name, const XGreeting &greeting) {
    const std::string words = name + " does not let this user in" +
                              (greeting.reason().empty() ? "" : ", and says: " + greeting.reason());
    if (greeting.reason().starts_with("Maximum number of clients"))
        return missing(words, "close some of the programs that use it");
    return missing(words, greeting.hadKey()
                              ? "the key file has an old or another server's key for it; set "
                                "XAUTHORITY to the key file of the session that it belongs to"
                              : "the key file has no key for it; run this as the user whose "
                                "session it is, or set XAUTHORITY to that session's key file");
}

// Why there is no server to ask.
static Check explain(const XGreeting &greeting) {
    if (displayVariable().empty())
        return missingName();
    const std::string name = "\"" + displayVariable() + "\"";
    switch (greeting.answer()) {
    case XGreeting::Answer::misnamed:
        return missing(name + ", the value of DISPLAY, is not a server's name",
                       "set DISPLAY to the name of the session's server, such as :0");
    case XGreeting::Answer::nobody:
        return missing("the server that DISPLAY names, " + name + ", is not there",
                       "run this in the desktop session, or set DISPLAY to its server's name, "
                       "such as :0");
    case XGreeting::Answer::silence:
        return missing(name + " does not answer",
                       "the server hangs, or the way to it is cut: look at its log, or log out and "
                       "in again");
    case XGreeting::Answer::hangUp:
        return missing(name + " takes the connection and ends it without a word",
                       "if DISPLAY was set by ssh, log in with it again, from a session whose "
                       "screen is still there; otherwise look at the server's log");
    case XGreeting::Answer::refusal:
        return refusal(name, greeting);
    default:
        return missing(name + " answered once, and then no more",
                       "is the server still running? Its log tells what became of it");
    }
}

static Check describe(const XServer &server) {
    const xcb_setup_t *setup = xcb_get_setup(server.get());
    return {Verdict::good, "X server",
            "\"" + displayVariable() + "\", " +
                std::string(xcb_setup_vendor(setup),
                            static_cast<std::size_t>(xcb_setup_vendor_length(setup))) +
                ", release " + std::to_string(setup->release_number) + ", root " +
                std::to_string(server.root().width_in_pixels) + " x " +
                std::to_string(server.root().height_in_pixels) + ", depth " +
                std::to_string(server.root().root_depth)};
}

struct System::Server {
    XGreeting greeting;
};

System::System() : server(std::make_unique<Server>()) {}
System::~System() = default;

std::vector<Check> System::examine() const {
    const XGreeting &greeting = server->greeting;
    if (greeting.answer() != XGreeting::Answer::welcome)
        return {explain(greeting)};
    const XServer connection;
    if (!connection.isThere())
        return {explain(greeting)};
    std::vector<Check> checks = {describe(connection)};
    for (Check &check : examineX(connection, greeting.isLocal()))
        checks.push_back(std::move(check));
    return checks;
}

void askForNetworkErrors(int fd, int family) {
    const int wanted = 1;
    if (family == AF_INET6)
        setsockopt(fd, IPPROTO_IPV6, IPV6_RECVERR, &wanted, sizeof wanted);
    else
        setsockopt(fd, IPPROTO_IP, IP_RECVERR, &wanted, sizeof wanted);
}

} // namespace mirrorctl
