// The commands of mirrorctl, one source file each.
#pragma once

#include "tools/mirrorctl/exitStatus.h"

#include <CLI/App.hpp>
#include <functional>

namespace mirrorctl {

// What a command line asks for. Commands run after all of it has been understood.
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

} // namespace mirrorctl
