// JSON pointers (RFC 6901) as texts.
//
// Pure functions, callable from any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace config {

// The pointer to a member of what `pointer` points to, or to an element.
std::string stepInto(const std::string &pointer, std::string_view name);
std::string stepInto(const std::string &pointer, std::size_t index);

// The names and indices on the way.
std::vector<std::string> stepsOf(const std::string &pointer);

// The pointer to print: one line without control characters, cut when it is very long.
std::string shownPointer(const std::string &pointer);

} // namespace config
