// What is wrong with one value, and how to fix it, in words.
#pragma once

#include "tools/config/configDocument.h"

#include <rapidjson/document.h>
#include <string>

namespace config {

// The object at `pointer` lacks the member `name`; `rules` are those of the object.
Problem missing(const rapidjson::Value &object, const std::string &pointer, const std::string &name,
                const rapidjson::Value &rules);

// The value at `pointer` is not what its rules ask for.
Problem mistyped(const rapidjson::Value &value, const std::string &pointer,
                 const rapidjson::Value &rules);

} // namespace config
