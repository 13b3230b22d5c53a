// mirrorctl: the command line host of the screen mirroring library.
#include "tools/lights/text.h"
#include "tools/mirrorctl/commands.h"

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <utility>

using mirrorctl::ExitStatus;

static std::string exitStatusHelp() {
    static constexpr std::pair<ExitStatus, const char *> rows[] = {
        {ExitStatus::Done, "done; for run also after Ctrl-C, which is how a run is meant to end"},
        {ExitStatus::Usage, "the command line is wrong"},
        {ExitStatus::DocumentFaulty, "the configuration document has errors"},
        {ExitStatus::FileUnreadable, "the configuration file is missing or cannot be read"},
        {ExitStatus::AddressFaulty,
         "a device's address is not that of a light, or (doctor) cannot be reached"},
        {ExitStatus::DisplayMissing,
         "there is no such display, or none at all, or the display server does not answer"},
        {ExitStatus::Failed, "anything else went wrong"},
        {ExitStatus::StartFailed, "mirroring could not be started, or ended by itself"},
        {ExitStatus::ServerGone, "run --once: the display server went away"},
        {ExitStatus::NothingSent,
         "there is nothing to show: nothing was sent in time, no frame came, or Ctrl-C came first\n"
         "      (for run: before anything was mirrored)"},
        {ExitStatus::CaptureRefused, "the display may not be captured"},
    };
    std::string text = "Exit status:\n";
    for (const auto &[status, meaning] : rows)
        text += lights::format("%6d  %s\n", static_cast<int>(status), meaning);
    return text;
}

// What is wrong with a first argument; empty when it is a command or an option.
static std::string commandProblem(const CLI::App &program, const char *word) {
    std::vector<std::string> commands;
    for (const CLI::App *command : program.get_subcommands(nullptr))
        commands.push_back(command->get_name());
    if (*word == '-' || std::find(commands.begin(), commands.end(), word) != commands.end())
        return {};
    std::string text = "mirrorctl has no command " + lights::quote(word) + ".";
    if (const auto near = lights::nearestName(word, commands))
        text += " Did you mean \"" + *near + "\"?";
    return text + "\nRun with --help for the list of commands.\n";
}

// NOLINTNEXTLINE(bugprone-exception-escape): it may throw when there is no memory for its options
int main(int argc, char **argv) {
    // Line buffering, so that a reader sees each line at once, also through a pipe.
    setvbuf(stdout, nullptr, _IOLBF, 0);

    CLI::App program("Mirrors a display onto networked light devices.", "mirrorctl");
    program.set_version_flag("--version", "mirrorctl " MIRROR_VERSION);
    program.require_subcommand(1);
    ExitStatus status = ExitStatus::Done;
    mirrorctl::addDisplaysCommand(program, status);
    mirrorctl::addCheckCommand(program, status);
    mirrorctl::addLayoutCommand(program, status);
    mirrorctl::addRunCommand(program, status);
    mirrorctl::addPaletteCommand(program, status);
    mirrorctl::addSnapshotCommand(program, status);
    mirrorctl::addDoctorCommand(program, status);
    for (CLI::App *command : program.get_subcommands(nullptr))
        command->footer(command->get_footer() + exitStatusHelp());
    program.footer("From nothing to a mirrored screen:\n"
                   "    mirrorctl layout 4x6 192.0.2.7 192.0.2.8 > wall.json\n"
                   "    mirrorctl check wall.json\n"
                   "    mirrorctl doctor wall.json\n"
                   "    mirrorctl run wall.json\n"
                   "\n"
                   "Each command has a --help of its own: mirrorctl run --help.\n\n" +
                   exitStatusHelp());
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        const std::string problem = argc > 1 ? commandProblem(program, argv[1]) : "";
        std::fputs(problem.c_str(), stderr);
        const bool isHelped = problem.empty() && program.exit(error) == 0;
        status = isHelped ? ExitStatus::Done : ExitStatus::Usage;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "mirrorctl: %s\n", error.what());
        status = ExitStatus::Failed;
    }
    return static_cast<int>(status);
}
