// From text to a JSON tree, or to the one reason why there is none.
#pragma once

#include "tools/config/configDocument.h"

#include <cstddef>
#include <rapidjson/document.h>
#include <string>

namespace config {

// A document is five levels deep. Whatever walks through its tree calls itself once a level, so
// that a text of nothing but brackets could end the process.
inline constexpr std::size_t deepestNesting = 256;

// A wall of ten thousand panels has some fifty thousand values. A text of nothing but values needs
// many times its size in memory.
inline constexpr std::size_t mostValues = 4'000'000;

// Parses `text` into `tree`, in just the way the library does. False when that fails, with the
// place and the reason in `problem`. Beyond what the library's parser refuses, this refuses a zero
// byte, at which the library would take the text to end, nesting deeper than `deepestNesting`, and
// more values than `mostValues`.
bool parse(const std::string &text, rapidjson::Document &tree, Problem &problem);

} // namespace config
