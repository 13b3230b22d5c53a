// The live page, if the command line asks for it.
#pragma once

#include "tools/panelwall/options.h"
#include "tools/panelwall/web/livePage.h"

#include <optional>
#include <vector>

namespace panelwall {

// Makes `page` and begins to serve it; leaves it empty when it was not asked for. `sockets` are the
// devices', in order, or none in a replay. False after a complaint when it cannot be served.
bool servePage(const Options &options, const config::Document &document, std::vector<int> sockets,
               std::optional<LivePage> &page);

} // namespace panelwall
