// What the ways to run the program share, and the ways themselves.
#pragma once

#include "tools/config/configDocument.h"
#include "tools/panelwall/options.h"
#include "tools/panelwall/web/livePage.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace panelwall {

// On standard error: a line per problem with the file at `path`; one line.
void complain(const std::string &path, const std::vector<config::Problem> &problems);
void complain(const std::string &path, const std::string &text);

// The document at `options.configPath`, with at least one device; or, after complaints, the exit
// status to end with.
std::variant<config::Document, ExitStatus> readWallDocument(const Options &options);

// Makes `page`, begins to serve it and writes the link to it; leaves it empty when it was not asked
// for. `sockets` are the devices', in order, or none in a replay. Not exitOk after a complaint.
ExitStatus servePage(const Options &options, const config::Document &document,
                     std::vector<int> sockets, std::optional<LivePage> &page);

// With --replay: plays the recording to its end, complaining about what is wrong; returns an exit
// status.
int replay(const Options &options);

// With --compare: prints where the recordings at these paths differ. Returns 0 when they do not, 1
// when they do, and 2 when one of them cannot be read to its end, after a comparison up to there.
int compareFiles(const std::string &left, const std::string &right);

} // namespace panelwall
