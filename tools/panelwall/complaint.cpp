#include "tools/panelwall/complaint.h"

#include <iostream>

namespace panelwall {

void complain(const std::string &path, const std::vector<config::Problem> &problems) {
    for (const config::Problem &problem : problems)
        std::cerr << "panelwall: " << config::describe(path, problem) << "\n";
}

void complain(const std::string &path, const std::string &text) {
    complain(path, std::vector<config::Problem>{{"", text}});
}

} // namespace panelwall
