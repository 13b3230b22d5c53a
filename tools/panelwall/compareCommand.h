// The program with --compare.
#pragma once

#include <string>

namespace panelwall {

// Prints where the recordings at these paths differ. Returns 0 when they do not, 1 when they do,
// and 2 when one of them cannot be read to its end, after a comparison up to there.
int compareFiles(const std::string &left, const std::string &right);

} // namespace panelwall
