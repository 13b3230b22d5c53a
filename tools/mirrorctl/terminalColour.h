// Colours in a terminal.
#pragma once

#include "tools/lights/device.h"

#include <string>

namespace mirrorctl {

using lights::Colour;

// Whether colours shall be shown there: on a terminal that does not call itself dumb.
bool showsColours(int fd);

// Four blanks on the colour, in 24-bit colour; the terminal's own colours are restored after it.
std::string swatch(const Colour &colour);

// "#ff8000"
std::string hexText(const Colour &colour);

} // namespace mirrorctl
