// What the library does with a configuration document, without the library.
#pragma once

#include <string>

namespace test {

// Reads `text` as the library reads it, every member in its order. False when it does not parse, or
// when the library would end the process at a member that is missing or mistyped.
bool libraryReads(const std::string &text);

} // namespace test
