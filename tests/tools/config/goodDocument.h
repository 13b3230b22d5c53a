// A configuration document without a fault, to be damaged by tests.
#pragma once

#include <rapidjson/document.h>
#include <string>

namespace test {

// Two devices, of three and of no panels; every member has a value of its own.
extern const char goodDocument[];

// The document with the value at `pointer` replaced by (or created as) the JSON text `value`.
std::string withValue(const std::string &pointer, const std::string &value);

// The document without the member at `pointer`.
std::string withoutValue(const std::string &pointer);

std::string write(const rapidjson::Document &tree);

} // namespace test
