// The choice between the sources. It is made when a source is used, by this rule:
//
//   1. MIRROR_DISPLAY_SERVER, if set, names the source: x11 or wayland. Another value is a mistake,
//      and with it there are no displays.
//   2. Otherwise Wayland, if WAYLAND_DISPLAY names a compositor that accepts connections. In a
//      Wayland session an X server usually answers too, but has no picture of the screen.
//   3. Otherwise X11.
//
// Once a compositor has accepted, the process keeps to Wayland as long as WAYLAND_DISPLAY is set:
// displays of the session's X server must not take their place while the compositor is down.
// Without WAYLAND_DISPLAY, the rule costs two look-ups in the environment and loads nothing.
#include "platform/session.h"

#include "platform/objects/source.h"
#include "platform/wayland/compositorSocket.h"
#include "platform/wayland/source.h"
#include "platform/x11/source.h"

#include <atomic>
#include <cstdlib>
#include <string_view>

namespace platform {

namespace {

constinit const Source none{
    []() -> std::optional<std::vector<std::uint32_t>> { return std::nullopt; },
    [](std::uint32_t) -> std::optional<Picture> { return std::nullopt; },
    [](std::uint32_t) { return false; },
    [](const CaptureSettings &, FrameGate &) -> std::optional<Capture> { return std::nullopt; }};

constinit std::atomic<bool> compositorAccepted = false;

std::string_view variable(const char *name) {
    const char *value = std::getenv(name);
    return value == nullptr ? "" : value;
}

} // namespace

SessionChoice chooseSession() {
    const std::string_view wanted = variable("MIRROR_DISPLAY_SERVER");
    if (wanted == "x11")
        return {Session::X11, "MIRROR_DISPLAY_SERVER says so"};
    if (wanted == "wayland")
        return {Session::Wayland, "MIRROR_DISPLAY_SERVER says so"};
    if (!wanted.empty())
        return {Session::None, "MIRROR_DISPLAY_SERVER is neither x11 nor wayland"};
    if (variable("WAYLAND_DISPLAY").empty())
        return {Session::X11, "WAYLAND_DISPLAY is not set"};
    if (!compositorAccepted && wayland::isCompositorThere())
        compositorAccepted = true;
    if (!compositorAccepted)
        return {Session::X11, "WAYLAND_DISPLAY names no compositor that accepts connections"};
    return {Session::Wayland, "WAYLAND_DISPLAY names a compositor that accepts connections"};
}

const Source &sessionSource() {
    switch (chooseSession().session) {
    case Session::X11:
        return x11::displaySource;
    case Session::Wayland:
        return wayland::displaySource;
    default:
        return none;
    }
}

} // namespace platform
