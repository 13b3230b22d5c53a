// The live page, if the command line asks for it.
#pragma once

#include "tools/panelwall/options.h"
#include "tools/panelwall/web/livePage.h"

#include <optional>
#include <vector>

namespace panelwall {

// Makes `page`, begins to serve it and writes the link to it; leaves it empty when it was not asked
// for. `sockets` are the devices', in order, or none in a replay. Not exitOk after a complaint.
ExitStatus servePage(const Options &options, const config::Document &document,
                     std::vector<int> sockets, std::optional<LivePage> &page);

} // namespace panelwall
