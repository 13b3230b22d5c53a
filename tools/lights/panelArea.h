// The part of the screen that colours a panel.
#pragma once

#include "tools/config/configDocument.h"

namespace config {

inline constexpr double wideBase = 150.0;  // base size in pixels, shapeType 0
inline constexpr double otherBase = 100.0; // any other shapeType

inline double baseSize(const DeviceEntry &device) {
    return device.shapeType == 0 ? wideBase : otherBase;
}

// Half a side of the square around the panel's centre, in pixels, before the screen cuts it.
inline double halfSide(const DeviceEntry &device) {
    return device.scaleFactor * baseSize(device) / 3.0;
}

} // namespace config
