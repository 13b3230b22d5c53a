// What is wrong, on standard error.
#pragma once

#include "tools/config/configDocument.h"

#include <string>
#include <vector>

namespace panelwall {

// A line per problem with the file at `path`.
void complain(const std::string &path, const std::vector<config::Problem> &problems);

// One line: the file and what is wrong with it.
void complain(const std::string &path, const std::string &text);

} // namespace panelwall
