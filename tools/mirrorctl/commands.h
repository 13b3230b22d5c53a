// The commands of mirrorctl, one source file each, and the arguments that several of them take.
#pragma once

#include "tools/config/configDocument.h"
#include "tools/mirrorctl/exitStatus.h"

#include <CLI/App.hpp>
#include <memory>
#include <string>

namespace mirrorctl {

// Each adds its command to the program. When the command line names it, it runs at the end of the
// parsing, and stores its result in `status`.
void addDisplaysCommand(CLI::App &program, ExitStatus &status);
void addCheckCommand(CLI::App &program, ExitStatus &status);
void addDoctorCommand(CLI::App &program, ExitStatus &status);
void addLayoutCommand(CLI::App &program, ExitStatus &status);
void addRunCommand(CLI::App &program, ExitStatus &status);
void addPaletteCommand(CLI::App &program, ExitStatus &status);
void addSnapshotCommand(CLI::App &program, ExitStatus &status);

// Makes `run` what the command does, with the options that were parsed into `options`.
template <typename Options>
void onCommand(CLI::App &command, ExitStatus &status, std::shared_ptr<Options> options,
               ExitStatus (*run)(const Options &)) {
    command.callback([&status, options, run] { status = run(*options); });
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
