// The palette of what the running mirror sees.
#pragma once

#include "tools/mirrorctl/terminalColour.h"

#include <string>
#include <vector>

namespace mirrorctl {

struct Palette {
    std::string text; // the library's own
    std::vector<Colour> colours;

    // Pure black, as it is before the first frame. More than one black is several hues, each too
    // dark to show.
    bool isDark() const;
};

// Asks the library. Throws std::runtime_error when it has no answer.
Palette fetchPalette();

// For how long after the start nothing but black is taken for a screen that has not been seen yet,
// even if the display is black. The library cannot be asked whether it has.
inline constexpr double darknessSeconds = 2.0;

} // namespace mirrorctl
