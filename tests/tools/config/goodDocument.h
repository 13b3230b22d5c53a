// A valid configuration document for tests to damage.
#pragma once

#include <rapidjson/document.h>
#include <string>

namespace test {

// Two devices, with three panels and with none; every member has its own value.
extern const char goodDocument[];

// The document with the value at `pointer` replaced by (or created as) the JSON text `value`.
std::string withValue(const std::string &pointer, const std::string &value);

// The document without the member at `pointer`.
std::string withoutValue(const std::string &pointer);

std::string write(const rapidjson::Document &tree);

} // namespace test
