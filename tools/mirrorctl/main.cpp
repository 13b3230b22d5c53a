// mirrorctl: the screen mirroring library's host for the command line.
#include "tools/config/nearName.h"
#include "tools/config/quote.h"
#include "tools/mirrorctl/commands.h"

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>

using mirrorctl::ExitStatus;

// What to say of a first argument that is neither a command nor an option; empty for one that is.
static std::string complainOfCommand(const CLI::App &program, const char *word) {
    std::vector<std::string> commands;
    for (const CLI::App *command : program.get_subcommands(nullptr))
        commands.push_back(command->get_name());
    if (*word == '-' || std::find(commands.begin(), commands.end(), word) != commands.end())
        return {};
    std::string text = "mirrorctl has no command " + config::quote(word, std::strlen(word)) + ".";
    if (const auto near = config::nearestName(word, commands))
        text += " Did you mean \"" + *near + "\"?";
    return text + "\nRun with --help for the list of commands.\n";
}

// NOLINTNEXTLINE(bugprone-exception-escape): without memory for its options it may end like this
int main(int argc, char **argv) {
    // Whoever reads along, also through a pipe, sees each line when it happens.
    setvbuf(stdout, nullptr, _IOLBF, 0);

    CLI::App program("Mirrors a display onto networked light devices.", "mirrorctl");
    program.set_version_flag("--version", "mirrorctl " MIRROR_VERSION);
    program.require_subcommand(1);
    program.footer("From nothing to a mirrored screen:\n"
                   "    mirrorctl layout 4x6 192.0.2.7 192.0.2.8 > wall.json\n"
                   "    mirrorctl check wall.json\n"
                   "    mirrorctl doctor wall.json\n"
                   "    mirrorctl run wall.json\n"
                   "\n"
                   "Each command has a --help of its own: mirrorctl run --help.\n\n" +
                   mirrorctl::exitStatusHelp());
    mirrorctl::Action chosen;
    mirrorctl::addDisplaysCommand(program, chosen);
    mirrorctl::addCheckCommand(program, chosen);
    mirrorctl::addLayoutCommand(program, chosen);
    mirrorctl::addRunCommand(program, chosen);
    mirrorctl::addPaletteCommand(program, chosen);
    mirrorctl::addSnapshotCommand(program, chosen);
    mirrorctl::addDoctorCommand(program, chosen);
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        const std::string complaint = argc > 1 ? complainOfCommand(program, argv[1]) : "";
        if (!complaint.empty()) {
            fputs(complaint.c_str(), stderr);
            return static_cast<int>(ExitStatus::usage);
        }
        const bool helped = program.exit(error) == 0;
        return static_cast<int>(helped ? ExitStatus::done : ExitStatus::usage);
    }
    try {
        return static_cast<int>(chosen());
    } catch (const std::exception &error) {
        fprintf(stderr, "mirrorctl: %s\n", error.what());
        return static_cast<int>(ExitStatus::failed);
    }
}
