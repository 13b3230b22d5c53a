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

const Source &sessionSource() {
    const std::string_view wanted = variable("MIRROR_DISPLAY_SERVER");
    if (wanted == "x11")
        return x11::displaySource;
    if (wanted == "wayland")
        return wayland::displaySource;
    if (!wanted.empty())
        return none;
    if (variable("WAYLAND_DISPLAY").empty())
        return x11::displaySource;
    if (!compositorAccepted && wayland::isCompositorThere())
        compositorAccepted = true;
    return compositorAccepted ? wayland::displaySource : x11::displaySource;
}

} // namespace platform
