// The ways to run the program.
#pragma once

#include "tools/panelwall/options.h"

#include <string>

namespace panelwall {

// Complains in one line about the file at `path` and throws Exit.
[[noreturn]] void refuse(ExitStatus status, const std::string &path, const std::string &text);

// Listens until the end; returns an exit status.
int runWall(const Options &options);

// With --replay: plays the recording to its end, and refuses it there if something is wrong with
// it; returns an exit status.
int replay(const Options &options);

// With --compare: prints where the recordings at these paths differ. Returns 0 when they do not, 1
// when they do, and 2 when one of them cannot be read to its end, after a comparison up to there.
int compareFiles(const std::string &left, const std::string &right);

} // namespace panelwall
