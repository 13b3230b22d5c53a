#include "tools/mirrorctl/doctor/doctor.h"

#include "platform/session.h"

#include <netinet/in.h>
#include <sys/socket.h>

namespace mirrorctl {

using platform::Session;

SystemChecks examineSystem() {
    const auto [session, reason] = platform::chooseSession();
    const std::string why = std::string(", since ") + reason;
    switch (session) {
    case Session::X11:
        return examineX11(why);
    case Session::Wayland:
        return examineWayland(why);
    default:
        return {{{Verdict::Bad, "session", "neither X11 nor Wayland" + why,
                  "set MIRROR_DISPLAY_SERVER to x11 or wayland, or unset it",
                  ExitStatus::DisplayMissing}},
                nullptr};
    }
}

ScreenMark drawMark(const Display &display, std::uint32_t colour) {
    return platform::chooseSession().session == Session::Wayland ? drawMarkWayland(display, colour)
                                                                 : drawMarkX11(display, colour);
}

void requestNetworkErrors(int fd, int family) {
    const int wanted = 1;
    if (family == AF_INET6)
        setsockopt(fd, IPPROTO_IPV6, IPV6_RECVERR, &wanted, sizeof wanted);
    else
        setsockopt(fd, IPPROTO_IP, IP_RECVERR, &wanted, sizeof wanted);
}

} // namespace mirrorctl
