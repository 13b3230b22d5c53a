// The monitors of the server's screen, which this platform calls displays.
#pragma once

#include "platform/x11/connection.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace platform::x11 {

struct Monitor {
    std::uint32_t id = 0;
    Rect area; // may reach beyond the root window
};

// The active monitors in the server's order, without those of an absurd size; nothing when the
// server did not answer or knows no monitors (RandR before 1.5).
std::optional<std::vector<Monitor>> listMonitors(Connection &connection);

// The monitor with this identifier, or nothing: never another one instead.
std::optional<Monitor> findMonitor(const std::vector<Monitor> &monitors, std::uint32_t id);

// Requests an event whenever the monitors or the root window may have changed. User-defined
// monitors are reported only by a ConfigureNotify of the root window, modes by RandR's own events.
void watchMonitors(Connection &connection);

} // namespace platform::x11
