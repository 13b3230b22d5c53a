// From a JSON tree to all that the schema finds wrong with it.
#pragma once

#include "tools/config/configDocument.h"

#include <rapidjson/document.h>
#include <vector>

namespace config {

// Every error, in the order in which the library would meet them: it reads the members in the order
// in which the schema lists them. Of members with one name the first counts, as in the library's
// lookup. Without places. Lists at most `mostProblems` and one that says that there are more.
std::vector<Problem> check(const rapidjson::Value &root);

} // namespace config
