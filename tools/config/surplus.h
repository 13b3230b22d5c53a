// Members that the library does not read.
#pragma once

#include "tools/config/configDocument.h"

#include <rapidjson/document.h>
#include <vector>

namespace config {

// A warning for each member that the schema does not name, and for each that is there again. Looks
// at the objects that the library reads, and no deeper. Lists at most `mostProblems`.
std::vector<Problem> surplusMembers(const rapidjson::Value &root);

} // namespace config
