// The commands of mirrorctl, one source file each, and the arguments that several of them take.
#pragma once

#include "tools/config/configDocument.h"
#include "tools/mirrorctl/exitStatus.h"

#include <CLI/App.hpp>
#include <memory>
#include <string>

namespace mirrorctl {

// Each function adds its command to the program. If the command line names it, the command runs at
// the end of parsing and stores its result in `status`.
void addDisplaysCommand(CLI::App &program, ExitStatus &status);
void addCheckCommand(CLI::App &program, ExitStatus &status);
void addDoctorCommand(CLI::App &program, ExitStatus &status);
void addLayoutCommand(CLI::App &program, ExitStatus &status);
void addRunCommand(CLI::App &program, ExitStatus &status);
void addPaletteCommand(CLI::App &program, ExitStatus &status);
void addSnapshotCommand(CLI::App &program, ExitStatus &status);

// Makes the command call `run` with the parsed `options`.
template <typename Options>
void onCommand(CLI::App &command, ExitStatus &status, std::shared_ptr<Options> options,
               ExitStatus (*run)(const Options &)) {
    command.callback([&status, options, run] { status = run(*options); });
}

// The path of a document.
CLI::Option *addConfig(CLI::App &command, std::string &path,
                       const std::string &help = "The document; - reads standard input");

// An option whose text `parse` converts to a value. If `parse` returns nothing, the error message
// says what was `expected`.
template <typename Value, typename Parse>
CLI::Option *addParsed(CLI::App &command, const std::string &name, Value &value, Parse parse,
                       const std::string &expected, const std::string &help) {
    const auto read = [&value, name, parse, expected](const std::string &text) {
        const auto parsed = parse(text);
        if (!parsed)
            throw CLI::ValidationError(name, "expected " + expected + ", found " + text);
        value = *parsed;
    };
    return command.add_option_function<std::string>(name, read, help);
}

// --screen: a size in pixels.
void addScreen(CLI::App &command, std::optional<config::ScreenSize> &size, const std::string &help);

// --seconds: above 0, within the range of every timer.
CLI::Option *checkSeconds(CLI::Option *option);

// --mode: a mode's name or number.
void addMode(CLI::App &command, std::optional<std::int32_t> &mode, const std::string &help);

} // namespace mirrorctl
