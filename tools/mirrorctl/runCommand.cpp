// mirrorctl run
#include "tools/config/modes.h"
#include "tools/mirrorctl/arguments.h"
#include "tools/mirrorctl/commands.h"
#include "tools/mirrorctl/steps.h"
#include "tools/mirrorctl/stopSignals.h"

#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>

namespace mirrorctl {

struct RunOptions {
    std::string path;
    std::optional<std::string> mode;
    std::optional<double> seconds;
};

static std::string count(std::size_t number, const char *thing) {
    return std::to_string(number) + " " + thing + (number == 1 ? "" : "s");
}

// "2 devices with 6 panels"
static std::string describeLights(const config::Document &document) {
    std::size_t panels = 0;
    for (const auto &device : document.devices)
        panels += device.panels.size();
    return count(document.devices.size(), "device") + " with " + count(panels, "panel");
}

static ExitStatus mirror(const config::Document &document, const StopSignals &signals,
                         std::optional<double> seconds) {
    const auto begin = std::chrono::steady_clock::now();
    if (const auto status = start(document.devices.size()); status != ExitStatus::done)
        return status;
    const auto display = static_cast<std::uint32_t>(document.displayID);
    const std::string lights = describeLights(document);
    printf("Mirroring display %u in %s mode onto %s. Ctrl-C stops.\n", display,
           config::modeName(document.mode), lights.c_str());
    const int signum = signals.wait(seconds);
    if (signum != 0)
        printf("Stopping: %s.\n", strsignal(signum));
    if (const auto status = stop(); status != ExitStatus::done)
        return status;
    const std::chrono::duration<double> length = std::chrono::steady_clock::now() - begin;
    printf("Mirrored display %u for %.1f s onto %s.\n", display, length.count(), lights.c_str());
    return ExitStatus::done;
}

static ExitStatus run(const RunOptions &options) {
    config::Reading reading;
    const auto mode = options.mode ? config::modeNumber(*options.mode) : std::nullopt;
    if (const auto status = load(options.path, mode, reading); status != ExitStatus::done)
        return status;
    // Not before the document has been read: Ctrl-C must end a wait for standard input.
    const StopSignals signals;
    if (const auto status = checkSurroundings(options.path, reading); status != ExitStatus::done)
        return status;
    if (const auto status =
            apply(mode ? withMode(reading.text, *mode) : reading.text, reading.document.displayID);
        status != ExitStatus::done)
        return status;
    return mirror(reading.document, signals, options.seconds);
}

void addRunCommand(CLI::App &program, Action &chosen) {
    auto *command = program.add_subcommand("run", "Mirror as a configuration document says");
    const auto options = std::make_shared<RunOptions>();
    command->add_option("CONFIG", options->path, "The document; - reads standard input")
        ->required();
    command
        ->add_option("--mode", options->mode,
                     "match, melt, fade or palette, or 0 to 3: instead of the document's mode")
        ->check(modeArgument());
    command->add_option("--seconds", options->seconds, "Stop by itself after so many seconds")
        ->check(secondsArgument());
    command->footer("Runs until SIGINT (Ctrl-C), SIGTERM or SIGHUP and then exits with 0: a run\n"
                    "that was stopped has done all that it was asked to.\n\n" +
                    exitStatusHelp());
    command->callback([&chosen, options] { chosen = [options] { return run(*options); }; });
}

} // namespace mirrorctl
