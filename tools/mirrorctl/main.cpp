// mirrorctl: the screen mirroring library's host for the command line.
#include "tools/mirrorctl/commands.h"

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <cstdio>
#include <exception>

using mirrorctl::ExitStatus;

// NOLINTNEXTLINE(bugprone-exception-escape): without memory for its options it may end like this
int main(int argc, char **argv) {
    // Whoever reads along, also through a pipe, sees each line when it happens.
    setvbuf(stdout, nullptr, _IOLBF, 0);

    CLI::App program("Mirrors a display onto networked light devices.", "mirrorctl");
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
