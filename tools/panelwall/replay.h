// The program with --replay.
#pragma once

#include "tools/panelwall/options.h"

namespace panelwall {

// Plays the recording to its end, complaining about what is wrong; returns an exit status.
int replay(const Options &options);

} // namespace panelwall
