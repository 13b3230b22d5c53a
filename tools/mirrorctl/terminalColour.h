// Colours in a terminal.
#pragma once

#include "tools/lights/device.h"
#include "tools/lights/text.h"

#include <string>

namespace mirrorctl {

using lights::Colour;
using lights::showsColours;

// Four blanks on the colour, in 24-bit colour; the terminal's own colours are restored after it.
inline std::string swatch(const Colour &colour) {
    return lights::format("\x1b[48;2;%d;%d;%dm    \x1b[0m", colour.red, colour.green, colour.blue);
}

// "#ff8000"
inline std::string hexText(const Colour &colour) {
    return lights::format("#%02x%02x%02x", colour.red, colour.green, colour.blue);
}

} // namespace mirrorctl
