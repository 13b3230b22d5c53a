// What the ways to run the program share, and the ways themselves.
#pragma once

#include "tools/config/configDocument.h"
#include "tools/panelwall/options.h"

#include <string>
#include <vector>

namespace panelwall {

// One line on standard error about the file at `path`.
void complain(const std::string &path, const std::string &text);

// Complains, a line per problem, and throws Exit.
[[noreturn]] void refuse(ExitStatus status, const std::string &path,
                         const std::vector<config::Problem> &problems);
[[noreturn]] void refuse(ExitStatus status, const std::string &path, const std::string &text);

// The document at `options.configPath`, with at least one device; refuses others.
config::Document readWallDocument(const Options &options);

// With --replay: plays the recording to its end, and refuses it there if something is wrong with
// it; returns an exit status.
int replay(const Options &options);

// With --compare: prints where the recordings at these paths differ. Returns 0 when they do not, 1
// when they do, and 2 when one of them cannot be read to its end, after a comparison up to there.
int compareFiles(const std::string &left, const std::string &right);

} // namespace panelwall
