// From a JSON tree to a configuration document.
#pragma once

#include "tools/config/configDocument.h"

#include <rapidjson/document.h>
#include <vector>

namespace config {

// Reads every member that the library would read, by the same rules, and appends a problem for
// each that the library would stop at, in the order in which the library meets them.
Document check(const rapidjson::Value &root, std::vector<Problem> &problems);

} // namespace config
