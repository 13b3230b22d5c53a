#include "platform/x11/source.h"

#include "platform/x11/capture.h"
#include "platform/x11/monitors.h"

#include <utility>

namespace platform::x11 {

namespace {

std::optional<std::vector<std::uint32_t>> listDisplays() {
    const auto connection = Connection::open();
    if (!connection)
        return std::nullopt;
    const auto monitors = listMonitors(*connection);
    if (!monitors)
        return std::nullopt;
    std::vector<std::uint32_t> displays;
    for (const Monitor &monitor : *monitors)
        displays.push_back(monitor.id);
    return displays;
}

std::optional<Picture> pictureOf(std::uint32_t display) {
    const auto connection = Connection::open();
    if (!connection)
        return std::nullopt;
    const auto monitors = listMonitors(*connection);
    const auto root = connection->rootArea();
    auto format = PixelFormat::of(*connection);
    if (!monitors || !root || !format)
        return std::nullopt;
    const auto monitor = findMonitor(*monitors, display);
    if (!monitor)
        return std::nullopt;

    const Rect &area = monitor->area;
    FramePainter painter(*connection, std::move(*format), area.width, area.height,
                         PixelMemory::Sharing::Never);
    painter.aimAt(area, *root);
    if (painter.paintAll() != ReadOutcome::Done)
        return std::nullopt;
    return Picture{static_cast<std::size_t>(area.width), static_cast<std::size_t>(area.height),
                   painter.takePixels()};
}

bool canCapture(std::uint32_t display) {
    return Capture::isPossible(display);
}

std::optional<platform::Capture> openCapture(const CaptureSettings &settings, FrameGate &gate) {
    const std::shared_ptr<Capture> capture = Capture::open(settings, gate);
    if (!capture)
        return std::nullopt;
    return platform::Capture{capture->pixels(),
                             [capture](const auto &onEvent) { capture->run(onEvent); },
                             [capture] { capture->breakOff(); }};
}

} // namespace

constinit const Source displaySource{listDisplays, pictureOf, canCapture, openCapture};

} // namespace platform::x11
