// A document's strings in messages.
#pragma once

#include <cstddef>
#include <string>

namespace config {

// The text as a JSON string, so that it is one line without control characters; a long one is cut
// between characters.
std::string quote(const char *text, std::size_t length);

} // namespace config
