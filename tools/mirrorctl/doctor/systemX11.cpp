#include "tools/mirrorctl/doctor/doctor.h"

#include "platform/objects/signals.h"
#include "platform/x11/connection.h"
#include "platform/x11/handshake.h"

#include <cstdlib>
#include <netinet/in.h>
#include <sys/socket.h>

namespace mirrorctl {

using platform::x11::Answer;
using platform::x11::Connection;
using platform::x11::Handshake;

static std::string displayVariable() {
    const char *value = std::getenv("DISPLAY");
    return value ? value : "";
}

static bool namesServer(const std::string &display) {
    char *host = nullptr;
    int number = 0;
    const bool isName = xcb_parse_display(display.c_str(), &host, &number, nullptr) != 0;
    std::free(host);
    return isName;
}

static Check missing(const std::string &finding, const std::string &remedy) {
    return {Verdict::Bad, "X server", finding, remedy, ExitStatus::DisplayMissing};
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

static Check refusal(const std::string &name, const Handshake &handshake) {
    const std::string finding = name + " does not let this user in" +
                                (handshake.reason.empty() ? "" : ", and says: " + handshake.reason);
    if (handshake.reason.starts_with("Maximum number of clients"))
        return missing(finding, "close some of the programs that use it");
    return missing(finding, handshake.hadKey
                                ? "the key file has an old or another server's key for it; set "
                                  "XAUTHORITY to the key file of the session that it belongs to"
                                : "the key file has no key for it; run this as the user whose "
                                  "session it is, or set XAUTHORITY to that session's key file");
}

// Why there is no server to ask.
static Check explain(const Handshake &handshake) {
    const std::string display = displayVariable();
    if (display.empty())
        return missingName();
    const std::string name = "\"" + display + "\"";
    if (!namesServer(display))
        return missing(name + ", the value of DISPLAY, is not a server's name",
                       "set DISPLAY to the name of the session's server, such as :0");
    switch (handshake.answer) {
    case Answer::NoServer:
        return missing("the server that DISPLAY names, " + name + ", is not there",
                       "run this in the desktop session, or set DISPLAY to its server's name, "
                       "such as :0");
    case Answer::Silence:
        return missing(name + " does not answer", "the server hangs, or the connection to it is "
                                                  "interrupted: look at its log, or log out and "
                                                  "in again");
    case Answer::HangUp:
        return missing(name + " accepts the connection and closes it without an answer",
                       "if DISPLAY was set by ssh, log in with it again, from a session whose "
                       "screen is still there; otherwise look at the server's log");
    case Answer::Refusal:
        return refusal(name, handshake);
    default:
        return missing(name + " answered once, but no longer",
                       "is the server still running? Its log says what happened to it");
    }
}

static Check describe(const Connection &connection) {
    const xcb_setup_t *setup = xcb_get_setup(connection.get());
    const xcb_screen_t &screen = connection.screen();
    return {Verdict::Good, "X server",
            "\"" + displayVariable() + "\", " +
                std::string(xcb_setup_vendor(setup),
                            static_cast<std::size_t>(xcb_setup_vendor_length(setup))) +
                ", release " + std::to_string(setup->release_number) + ", root " +
                std::to_string(screen.width_in_pixels) + " x " +
                std::to_string(screen.height_in_pixels) + ", depth " +
                std::to_string(screen.root_depth)};
}

SystemChecks examineSystem() {
    constexpr auto patience = std::chrono::seconds(4);
    const platform::SigpipeGuard guard;
    auto handshake =
        std::make_shared<Handshake>(platform::x11::shakeHands(platform::Clock::now() + patience));
    const auto connection = handshake->answer == Answer::Welcome ? Connection::open() : nullptr;
    if (!connection)
        return {{explain(*handshake)}, handshake};
    SystemChecks result{{describe(*connection)}, handshake};
    for (Check &check : examineX(*connection))
        result.checks.push_back(std::move(check));
    return result;
}

void requestNetworkErrors(int fd, int family) {
    const int wanted = 1;
    if (family == AF_INET6)
        setsockopt(fd, IPPROTO_IPV6, IPV6_RECVERR, &wanted, sizeof wanted);
    else
        setsockopt(fd, IPPROTO_IP, IP_RECVERR, &wanted, sizeof wanted);
}

} // namespace mirrorctl
