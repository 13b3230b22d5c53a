// What a run needs of a document beyond what the library reads without a word.
#pragma once

#include "tools/config/configDocument.h"
#include "tools/mirrorctl/displayList.h"

namespace mirrorctl {

// With a mode that does not exist, the library's run ends as soon as it has begun.
std::vector<config::Problem> modeProblems(const config::Document &document);

// Whether it is an IPv4 or IPv6 address in numbers.
bool isAddress(const std::string &text);

// The library does not report addresses that cannot be parsed; such devices just stay dark. IPv4
// must be four decimal numbers without leading zeros, since elsewhere 010 may mean 8.
std::vector<config::Problem> addressProblems(const config::Document &document);

// The display must be one that the library lists. No other is ever taken in its place.
std::vector<config::Problem> displayProblems(const config::Document &document,
                                             const DisplayList &list);

} // namespace mirrorctl
