// Whether pictures of a display arrive, and how fresh they are.
#pragma once

#include "tools/mirrorctl/displayList.h"
#include "tools/mirrorctl/doctor/diagnosis.h"
#include "tools/mirrorctl/stopSignals.h"

namespace mirrorctl {

// Mirrors the display for a moment onto this process itself. Black proves nothing, since a screen
// may be black and a library that has seen none sends black as well; so a mark is drawn in a corner
// of the screen, if that is allowed and possible, and must come out. `interrupted` is set when a
// signal came. The only run of its time; calls the library, on the host's thread.
Check tryCapture(const Display &display, bool mayMark, const StopSignals &signals,
                 bool &interrupted);

} // namespace mirrorctl
