#include "tools/panelwall/servePage.h"

#include <iostream>

namespace panelwall {

bool servePage(const Options &options, const config::Document &document, std::vector<int> sockets,
               std::optional<LivePage> &page) {
    if (!options.web)
        return true;
    page.emplace(static_cast<std::uint32_t>(document.displayID), std::move(sockets));
    const std::string reason = page->open(options.web->address, options.web->port);
    if (reason.empty())
        return true;
    std::cerr << "panelwall: " << reason << "\n";
    return false;
}

} // namespace panelwall
