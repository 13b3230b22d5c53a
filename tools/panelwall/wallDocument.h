// The configuration that the command line names.
#pragma once

#include "tools/panelwall/options.h"

#include <variant>

namespace panelwall {

// The document at `options.configPath`, with at least one device; or, after complaints, the exit
// status to end with.
std::variant<config::Document, ExitStatus> readWallDocument(const Options &options);

} // namespace panelwall
