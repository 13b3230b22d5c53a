#include "tools/mirrorctl/doctor/doctor.h"

#include "platform/objects/signals.h"
#include "platform/wayland/capture.h"
#include "platform/wayland/compositorSocket.h"
#include "tools/lights/text.h"

#include <cstdlib>

namespace mirrorctl {

using platform::wayland::Compositor;

static std::string variable(const char *name) {
    const char *value = std::getenv(name);
    return value == nullptr ? "" : value;
}

static Check missing(const std::string &finding, const std::string &remedy) {
    return {Verdict::Bad, "compositor", finding, remedy, ExitStatus::DisplayMissing};
}

// Why the compositor cannot be queried.
static Check explain(const std::string &name) {
    const auto [socket, isSilent] = platform::wayland::openCompositorSocket();
    const bool isRelative = name.find('/') != 0;
    if (isRelative && variable("XDG_RUNTIME_DIR").empty())
        return missing("the variable XDG_RUNTIME_DIR is not set, so the socket \"" + name +
                           "\" cannot be found",
                       "run this in the desktop session, or set XDG_RUNTIME_DIR to the folder of "
                       "the compositor's socket, such as /run/user/1000");
    if (!socket.valid() && !isSilent)
        return missing("the compositor that WAYLAND_DISPLAY names, \"" + name +
                           "\", is not there, or does not let this user in",
                       "run this in the desktop session, as the user whose session it is, or set "
                       "WAYLAND_DISPLAY to the name of its compositor, such as wayland-0");
    if (!platform::wayland::Library().isLoaded())
        return missing("libwayland-client.so.0, the library to talk to it, is not installed, or "
                       "is older than 1.20",
                       "install it; on Debian its package is libwayland-client0");
    return missing("\"" + name + "\" accepts the connection, but does not answer",
                   "the compositor hangs: look at its log, or log out and in again");
}

static Check examineOutputs(const std::string &name, std::size_t count) {
    if (count == 0)
        return missing("\"" + name + "\" names no output that could be mirrored",
                       "is a monitor connected and switched on?");
    return {Verdict::Good, "compositor", "\"" + name + "\", " + lights::counted(count, "output")};
}

static Check examineScreen(const Compositor &compositor,
                           const std::vector<std::uint32_t> &displays) {
    const auto unreadable = [](const std::string &finding, const std::string &remedy) {
        return Check{Verdict::Bad, "screen", finding, remedy, ExitStatus::CaptureRefused};
    };
    if (compositor.screenCopies() == nullptr)
        return unreadable("the compositor has no wlr-screencopy of version 3 or later, with which "
                          "programs copy the screen; GNOME and KDE have none",
                          "log in to a session whose compositor has it, such as sway, or to an X11 "
                          "session");
    for (const std::uint32_t display : displays)
        if (platform::wayland::Capture::isPossible(display))
            return {Verdict::Good, "screen",
                    "copied by the compositor, which asks nobody (wlr-screencopy)"};
    return unreadable("the compositor offers no copies of it that the library can read",
                      "is the monitor switched on? The library reads wl_shm buffers of 16 to 32 "
                      "bits of red, green and blue");
}

SystemChecks examineWayland(const std::string &why) {
    const Check session{Verdict::Good, "session", "Wayland" + why};
    const platform::SigpipeGuard guard;
    std::string name = variable("WAYLAND_DISPLAY");
    if (name.empty())
        name = "wayland-0";
    const std::shared_ptr<Compositor> compositor = Compositor::open();
    if (!compositor)
        return {{session, explain(name)}, nullptr};
    const std::vector<std::uint32_t> displays = compositor->displays();
    std::vector<Check> checks = {session, examineOutputs(name, displays.size())};
    if (!displays.empty())
        checks.push_back(examineScreen(*compositor, displays));
    return {checks, nullptr};
}

} // namespace mirrorctl
