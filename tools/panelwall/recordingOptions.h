// The part of the command line that is about recordings.
#pragma once

#include "tools/panelwall/options.h"

namespace CLI {
class App;
}

namespace panelwall {

// Adds the options to `app`, to be parsed into `options`; both outlive the parsing.
void addRecordingOptions(CLI::App &app, Options &options);

// What --help says about recordings.
extern const char recordingHelp[];

} // namespace panelwall
