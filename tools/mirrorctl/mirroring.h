// The steps that the commands share, from a configuration file to a run and its end. Each that
// returns a status reports on standard error what went wrong; Done means that the next may follow.
//
// One thread, the one that calls the library.
#pragma once

#include "tools/config/configDocument.h"
#include "tools/mirrorctl/displays.h"
#include "tools/mirrorctl/exitStatus.h"
#include "tools/mirrorctl/waiting.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace mirrorctl {

// What a run requires of a document beyond what the library checks itself. A mode must exist, or
// the library's run ends as soon as it has begun; each device must have the address of one light;
// the display must be one that the library lists, and no other is ever taken in its place.
std::vector<config::Problem> modeProblems(const config::Document &document);
std::vector<config::Problem> addressProblems(const config::Document &document);
std::vector<config::Problem> displayProblems(const config::Document &document,
                                             const DisplayList &list);

// Reads the document and checks all of it that needs no screen. `mode`, if given, takes the place
// of the document's own.
ExitStatus load(const std::string &path, std::optional<std::int32_t> mode,
                config::Reading &reading);

// Whether the document's display is there, and with `usesLights` whether its devices have the
// addresses of lights; `path` only names it.
ExitStatus checkRequirements(const std::string &path, const config::Reading &reading,
                             bool usesLights);

// Hands the library a document's text; `displayID` is its display.
ExitStatus apply(std::string text, std::int32_t displayID);

// Starts a run onto so many devices; stops it.
ExitStatus start(std::size_t deviceCount);
ExitStatus stop();

// Reads the document and mirrors its display, onto its devices or onto none, for as long as `work`
// takes. Ends the process when a signal comes and `work` does not return, as untilSignal() does,
// which `nothing` is for.
using BriefWork = std::function<ExitStatus(const StopSignals &)>;
ExitStatus mirrorBriefly(const std::string &path, bool usesLights, const char *nothing,
                         config::Reading &reading, const BriefWork &work);

// The colours of what the running mirror sees.
struct Palette {
    std::string text; // the library's own
    std::vector<lights::Colour> colours;

    // Pure black, as it is before the first frame. More than one black is several hues, each too
    // dark to show.
    bool isDark() const;
};

// Asks the library. Throws std::runtime_error when it has no answer.
Palette fetchPalette();

// For how long after the start nothing but black is taken for a screen that has not been seen yet,
// even if the display is black. The library cannot be asked whether it has.
inline constexpr double darknessSeconds = 2.0;

} // namespace mirrorctl
