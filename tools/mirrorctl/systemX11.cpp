#include "tools/mirrorctl/system.h"
#include "tools/mirrorctl/xServer.h"

#include <cstdlib>
#include <netinet/in.h>
#include <sys/socket.h>
#include <xcb/randr.h>

namespace mirrorctl {

static std::string variable(const char *name) {
    const char *value = std::getenv(name);
    return value ? value : "";
}

static Check examineServer(const XServer &server) {
    Check check{Verdict::good, "X server", ""};
    if (!server.isThere()) {
        check.verdict = Verdict::bad;
        check.status = ExitStatus::displayMissing;
        const std::string name = variable("DISPLAY");
        check.words = server.isSilent() ? "\"" + name + "\" does not answer"
                      : name.empty()    ? "the variable DISPLAY is not set, so there is none to ask"
                                        : "the server that DISPLAY names, \"" + name +
                                           "\", is not there or does not let this user in";
        check.remedy = "run this in the desktop session, or set DISPLAY to its server's name, such "
                       "as :0, and XAUTHORITY to its key file";
        return check;
    }
    const xcb_setup_t *setup = xcb_get_setup(server.get());
    check.words = "\"" + variable("DISPLAY") + "\", " +
                  std::string(xcb_setup_vendor(setup),
                              static_cast<std::size_t>(xcb_setup_vendor_length(setup))) +
                  ", release " + std::to_string(setup->release_number) + ", root " +
                  std::to_string(server.root().width_in_pixels) + " x " +
                  std::to_string(server.root().height_in_pixels) + ", depth " +
                  std::to_string(server.root().root_depth);
    return check;
}

// An X server inside another display system shows its own windows and black for all others.
static Check examineSession() {
    Check check{Verdict::good, "session", "a session of the X server's own"};
    if (variable("WAYLAND_DISPLAY").empty() && variable("XDG_SESSION_TYPE") != "wayland")
        return check;
    check.verdict = Verdict::unsure;
    check.words = "this is a Wayland session; its X server shows X programs only, and black where "
                  "other windows are";
    check.remedy = "log in to an X11 session to mirror all that is on the screen";
    return check;
}

static bool hasExtension(const XServer &server, const std::string &name) {
    const XReply<xcb_query_extension_reply_t> reply(xcb_query_extension_reply(
        server.get(),
        xcb_query_extension(server.get(), static_cast<std::uint16_t>(name.size()), name.c_str()),
        nullptr));
    return reply && reply->present;
}

static Check examineRandr(const XServer &server) {
    Check check{Verdict::good, "RANDR", "lists the displays"};
    if (!hasExtension(server, "RANDR"))
        return {Verdict::bad, "RANDR", "missing; without it there are no displays to name",
                "use an X server with RANDR 1.5 or later", ExitStatus::displayMissing};
    const XReply<xcb_randr_query_version_reply_t> version(xcb_randr_query_version_reply(
        server.get(), xcb_randr_query_version(server.get(), 1, 5), nullptr));
    if (version && (version->major_version > 1 || version->minor_version >= 5))
        return check;
    return {Verdict::bad, "RANDR", "older than 1.5, which lists monitors",
            "use an X server with RANDR 1.5 or later", ExitStatus::displayMissing};
}

std::vector<Check> examineSystem() {
    const XServer server;
    std::vector<Check> checks = {examineServer(server)};
    if (!server.isThere())
        return checks;
    checks.push_back(examineSession());
    checks.push_back(examineRandr(server));
    const struct {
        const char *name;
        const char *use;
        const char *loss;
    } others[] = {
        {"MIT-SHM", "the screen is read through shared memory",
         "missing; the screen is read through the connection, at several times the cost"},
        {"DAMAGE", "a screen that holds still costs nothing",
         "missing; the screen is read again and again, also when nothing changes"},
        {"XFIXES", "changed regions are told apart",
         "missing; changed regions cannot be told apart"},
    };
    for (const auto &other : others) {
        const bool isThere = hasExtension(server, other.name);
        checks.push_back(
            {isThere ? Verdict::good : Verdict::unsure, other.name,
             isThere ? other.use : other.loss,
             isThere ? "" : "switch the extension on in the X server's configuration"});
    }
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
