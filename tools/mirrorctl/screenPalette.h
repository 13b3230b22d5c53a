// The palette of what a display shows.
#pragma once

#include "tools/mirrorctl/exitStatus.h"
#include "tools/mirrorctl/stopSignals.h"
#include "tools/mirrorctl/swatch.h"

#include <cstdint>
#include <string>
#include <vector>

namespace mirrorctl {

struct ScreenPalette {
    std::string text; // the library's own
    std::vector<Colour> colours;
};

// How an interruption is told.
inline constexpr char noPalette[] = "No palette";

// The library's palette of what the running mirror sees. Throws std::runtime_error when the library
// has no answer.
ScreenPalette fetchPalette();

// Whether the palette is pure black, as it is before the first frame. More than one black is
// several hues, each too dark to show.
bool isDark(const ScreenPalette &palette);

// The palette of the first frame of a run onto `display` that has just been started in palette
// mode. A palette that is not dark proves that a frame has come; black is believed after
// `darknessSeconds` if the display is black, else after `lateFrameSeconds`. Says what went wrong
// unless it is done. Throws std::runtime_error when the library has no answer.
ExitStatus awaitPalette(std::uint32_t display, const StopSignals &signals, ScreenPalette &palette);

} // namespace mirrorctl
