// From a JSON tree to a configuration document.
#pragma once

#include "tools/config/configDocument.h"

#include <rapidjson/document.h>

namespace config {

// Reads every member that the library would read. What is missing or mistyped reads as nothing: 0,
// or empty; array elements keep their places.
Document readDocument(const rapidjson::Value &root);

} // namespace config
