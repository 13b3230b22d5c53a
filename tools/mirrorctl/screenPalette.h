// The palette of what a display shows.
#pragma once

#include "tools/mirrorctl/exitStatus.h"
#include "tools/mirrorctl/stopSignals.h"
#include "tools/mirrorctl/swatch.h"

#include <string>
#include <vector>

namespace mirrorctl {

struct ScreenPalette {
    std::string text; // the library's own
    std::vector<Colour> colours;
};

// How an interruption is told.
inline constexpr char noPalette[] = "No palette";

// The palette of the first frame of a run that has just been started in palette mode. A palette
// other than pure black proves that a frame has come; a screen that is black is believed after
// `darknessSeconds`. Says what went wrong unless it is done. Throws std::runtime_error when the
// library has no answer.
ExitStatus awaitPalette(const StopSignals &signals, ScreenPalette &palette);

} // namespace mirrorctl
