// What a run needs of a document beyond what the library reads without a word.
#pragma once

#include "tools/config/configDocument.h"
#include "tools/mirrorctl/displayList.h"

namespace mirrorctl {

// With a mode that does not exist, the library's run ends as soon as it has begun.
std::vector<config::Problem> modeProblems(const config::Document &document);

// Each device must have the address of one light (addressProblem()).
std::vector<config::Problem> addressProblems(const config::Document &document);

// The display must be one that the library lists. No other is ever taken in its place.
std::vector<config::Problem> displayProblems(const config::Document &document,
                                             const DisplayList &list);

} // namespace mirrorctl
