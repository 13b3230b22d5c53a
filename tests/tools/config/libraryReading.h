// What the library does with a configuration document, without the library.
#pragma once

#include <string>

namespace test {

// Reads `text` as the library reads it, every member in its order, in a child process, since a
// member that is missing or mistyped ends the process. True when the child came to the end.
bool libraryReads(const std::string &text);

} // namespace test
