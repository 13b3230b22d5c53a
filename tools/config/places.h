// Where the values of a document stand in its text.
#pragma once

#include "tools/config/configDocument.h"

#include <cstddef>
#include <string>
#include <vector>

namespace config {

// The place of a byte, or of the text's end.
Place placeAt(const std::string &text, std::size_t offset);

// Fills in the places of all problems from their pointers, in one pass over `text`, which parses.
// A pointer to nothing gets the place of the innermost thing on its way that is there.
void locate(const std::string &text, std::vector<Problem> &problems);

} // namespace config
