// A light device as configuration documents describe it, and values derived from that.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace lights {

// A colour as panels show it.
struct Colour {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;

    bool operator==(const Colour &) const = default;
};

struct PanelEntry {
    std::int32_t panelID = 0;
    std::int32_t centroidX = 0; // screen pixels
    std::int32_t centroidY = 0;
};

struct DeviceEntry {
    std::string ip;
    std::int32_t controlVersion = 0; // 1: narrow layout, port 60221; else wide, port 60222
    std::int32_t shapeType = 0;
    double scaleFactor = 0.0;
    std::vector<PanelEntry> panels;

    int port() const { return controlVersion == 1 ? 60221 : 60222; }
};

inline constexpr double wideBase = 150.0;  // base size in pixels, shapeType 0
inline constexpr double otherBase = 100.0; // any other shapeType

inline double baseSize(const DeviceEntry &device) {
    return device.shapeType == 0 ? wideBase : otherBase;
}

// Half the side, in pixels, of the square on the screen around a panel's centre that gives the
// panel its colour, before clipping to the screen.
inline double halfSide(const DeviceEntry &device) {
    return device.scaleFactor * baseSize(device) / 3.0;
}

} // namespace lights
