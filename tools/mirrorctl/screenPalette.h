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

// A document that mirrors the display and lights nothing: its one device is this machine and has no
// panels, so that the run's datagrams do not leave the machine and name no panel to whoever may
// listen here. In match mode, which sends at a steady pace whatever the screen shows.
std::string documentWithoutLights(std::int32_t displayID);

// The palette of the first frame of a run that has just been started with that document. A palette
// other than pure black proves that a frame has come; a screen that is black is believed after
// `darknessSeconds`. Says what went wrong unless it is done. Throws std::runtime_error when the
// library has no answer.
ExitStatus awaitPalette(const StopSignals &signals, ScreenPalette &palette);

} // namespace mirrorctl
