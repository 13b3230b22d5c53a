#include "platform/objects/source.h"

#include "platform/x11/capture.h"
#include "platform/x11/monitors.h"

#include <utility>

namespace platform {

std::optional<std::vector<std::uint32_t>> listDisplays() {
    const auto connection = x11::Connection::open();
    if (!connection)
        return std::nullopt;
    const auto monitors = x11::listMonitors(*connection);
    if (!monitors)
        return std::nullopt;
    std::vector<std::uint32_t> displays;
    for (const x11::Monitor &monitor : *monitors)
        displays.push_back(monitor.id);
    return displays;
}

std::optional<Picture> pictureOf(std::uint32_t display) {
    const auto connection = x11::Connection::open();
    if (!connection)
        return std::nullopt;
    const auto monitors = x11::listMonitors(*connection);
    const auto root = connection->rootArea();
    auto format = x11::PixelFormat::of(*connection);
    if (!monitors || !root || !format)
        return std::nullopt;
    const auto monitor = x11::findMonitor(*monitors, display);
    if (!monitor)
        return std::nullopt;

    const x11::Rect &area = monitor->area;
    x11::FramePainter painter(*connection, std::move(*format), area.width, area.height,
                              x11::PixelMemory::Sharing::Never);
    painter.aimAt(area, *root);
    if (painter.paintAll() != x11::ReadOutcome::Done)
        return std::nullopt;
    return Picture{static_cast<std::size_t>(area.width), static_cast<std::size_t>(area.height),
                   painter.takePixels()};
}

bool canCapture(std::uint32_t display) {
    return x11::Capture::isPossible(display);
}

std::optional<Capture> openCapture(const CaptureSettings &settings, FrameGate &gate) {
    const std::shared_ptr<x11::Capture> capture = x11::Capture::open(settings, gate);
    if (!capture)
        return std::nullopt;
    return Capture{capture->pixels(), [capture](const auto &onEvent) { capture->run(onEvent); },
                   [capture] { capture->breakOff(); }};
}

} // namespace platform
