// The steps that the commands share, from reading a configuration file to ending a run. Functions
// that return a status print errors on standard error; Done means that the next step may follow.
//
// Called only by the thread that calls the library.
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

// Requirements of a run that the library does not check. The mode must exist, or the library's run
// ends at once; each device must have the address of one light; the library must list the
// document's display, which is never replaced by another.
std::vector<config::Problem> modeProblems(const config::Document &document);
std::vector<config::Problem> addressProblems(const config::Document &document);
std::vector<config::Problem> displayProblems(const config::Document &document,
                                             const DisplayList &list);

// Reads the document and checks it against the schema, and its mode. `mode`, if given, replaces the
// document's mode.
ExitStatus load(const std::string &path, std::optional<std::int32_t> mode,
                config::Reading &reading);

// Checks that the document's display is there and, with `usesLights`, that its devices have the
// addresses of lights. `path` is used only in messages.
ExitStatus checkRequirements(const std::string &path, const config::Reading &reading,
                             bool usesLights);

// Passes a document's text to the library; `displayID` is its display.
ExitStatus apply(std::string text, std::int32_t displayID);

// Starts a run, and stops it. `deviceCount` is used only in the error message.
ExitStatus start(std::size_t deviceCount);
ExitStatus stop();

// Reads the document and mirrors its display while `work` runs: onto its devices or, without
// `usesLights`, onto none. If a signal comes and `work` does not return, ends the process as
// untilSignal() does; `nothing` is for that function.
using BriefWork = std::function<ExitStatus(const StopSignals &)>;
ExitStatus mirrorBriefly(const std::string &path, bool usesLights, const char *nothing,
                         config::Reading &reading, const BriefWork &work);

// The colours of the screen that is being mirrored.
struct Palette {
    std::string text; // the library's own
    std::vector<lights::Colour> colours;

    // Whether it is pure black, as before the first frame. Several blacks are several hues that are
    // all too dark to show.
    bool isDark() const { return colours.empty() || colours == std::vector<lights::Colour>(1); }
};

// Asks the library. Throws std::runtime_error if the library returns no valid palette.
Palette fetchPalette();

// For this many seconds after the start, black is taken to mean that no frame has arrived yet, even
// if the display is black. The library cannot be asked whether one has.
inline constexpr double darknessSeconds = 2.0;

} // namespace mirrorctl
