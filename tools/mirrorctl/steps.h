// The steps that the commands share, from a configuration file to a run and its end. Each that can
// fail says on standard error what went wrong; done means that the next step may follow.
//
// One thread, the one that calls the library.
#pragma once

#include "tools/config/configDocument.h"
#include "tools/mirrorctl/exitStatus.h"

#include <cstdint>
#include <optional>
#include <string>

namespace mirrorctl {

// For how long after the start nothing but black is taken for a screen that has not been seen yet:
// when the display is black, and when it is lit. The library cannot be asked whether it has.
inline constexpr double darknessSeconds = 2.0;
inline constexpr double lateFrameSeconds = 5.0;

// Reads the document and checks all of it that needs no screen. `mode`, if given, takes the place
// of the document's own, but not in the text: that stays as it was written.
ExitStatus load(const std::string &path, std::optional<std::int32_t> mode,
                config::Reading &reading);

// Whether the document's display is there; `path` only names it.
ExitStatus checkDisplay(const std::string &path, const config::Reading &reading);

// Whether its devices can be reached as well, as far as that can be told beforehand.
ExitStatus checkSurroundings(const std::string &path, const config::Reading &reading);

// Hands the library a document's text; `displayID` is its display.
ExitStatus apply(std::string text, std::int32_t displayID);

// Starts a run onto so many devices; stops it.
ExitStatus start(std::size_t deviceCount);
ExitStatus stop();

// The document with another mode. It begins with the new member: of members with one name the
// library takes the first, and everything else stays as it was written. `text` is a document
// without problems.
std::string withMode(const std::string &text, std::int32_t mode);

} // namespace mirrorctl
