// Reads a configuration document as the library does, but without the library.
#pragma once

#include <string>

namespace test {

// Reads every member of `text` in the library's order. False when it does not parse, or when a
// member is missing or mistyped, at which the library would end the process.
bool libraryReads(const std::string &text);

} // namespace test
