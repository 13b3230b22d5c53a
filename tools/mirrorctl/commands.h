// The commands of mirrorctl, one source file each, and the arguments that several of them take.
#pragma once

#include "tools/config/configDocument.h"
#include "tools/mirrorctl/exitStatus.h"

#include <CLI/App.hpp>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace mirrorctl {

// What a command line asks for. Commands run after all of it has been parsed.
using Action = std::function<ExitStatus()>;

// Each adds its command to the program; when the command line names it, parsing stores what is to
// be done in `chosen`, which must outlive the parsing.
void addDisplaysCommand(CLI::App &program, Action &chosen);
void addCheckCommand(CLI::App &program, Action &chosen);
void addDoctorCommand(CLI::App &program, Action &chosen);
void addLayoutCommand(CLI::App &program, Action &chosen);
void addRunCommand(CLI::App &program, Action &chosen);
void addPaletteCommand(CLI::App &program, Action &chosen);
void addSnapshotCommand(CLI::App &program, Action &chosen);

// Chooses `run` for the command, with the options that were parsed into `options`.
template <typename Options>
void onCommand(CLI::App &command, Action &chosen, std::shared_ptr<Options> options,
               ExitStatus (*run)(const Options &)) {
    command.callback(
        [&chosen, options, run] { chosen = [options, run] { return run(*options); }; });
}

// The path of a document.
CLI::Option *addConfig(CLI::App &command, std::string &path,
                       const std::string &help = "The document; - reads standard input");

// --screen: a size in pixels; config::parseScreenSize() reads it with `mostPixels`.
void addScreen(CLI::App &command, std::string &size, const std::string &help);
inline constexpr std::uint32_t mostPixels = 65536; // a side

// --seconds: above 0, within the range of every timer.
CLI::Option *checkSeconds(CLI::Option *option);

// --mode: a mode's name or number; config::modeNumber() reads it.
CLI::Option *checkMode(CLI::Option *option);

} // namespace mirrorctl
