// mirrorctl run
#include "mirror/mirrorInterface.h"
#include "tools/config/textFile.h"
#include "tools/mirrorctl/commands.h"
#include "tools/mirrorctl/stopSignals.h"
#include "tools/mirrorctl/suitability.h"

#include <CLI/Validators.hpp>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>

namespace mirrorctl {

struct RunOptions {
    std::string path;
    std::optional<double> seconds;
};

static void print(const std::string &path, const std::vector<config::Problem> &problems) {
    const std::string name = path == "-" ? "standard input" : path;
    for (const auto &problem : problems)
        fprintf(stderr, "%s\n", config::describe(name, problem).c_str());
}

// Reads the document and checks all of it that needs no screen.
static ExitStatus load(const std::string &path, config::Reading &reading) {
    std::string reason;
    const auto text = config::readTextFile(path, reason);
    if (!text) {
        print(path, {{"", "cannot be read: " + reason}});
        return ExitStatus::fileUnreadable;
    }
    reading = config::readText(*text);
    if (reading.problems.empty())
        reading.problems = modeProblems(reading.document);
    print(path, reading.problems);
    return reading.problems.empty() ? ExitStatus::done : ExitStatus::documentFaulty;
}

// Whether the document's devices can be reached and its display captured, as far as that can be
// told beforehand.
static ExitStatus checkSurroundings(const std::string &path, const config::Document &document) {
    const auto addresses = addressProblems(document);
    print(path, addresses);
    const auto list = listDisplays();
    const auto displays = displayProblems(document, list.displays);
    print(path, displays);
    if (list.displays.empty())
        fputs(noDisplayAdvice().c_str(), stderr);
    if (!addresses.empty())
        return ExitStatus::addressFaulty;
    return displays.empty() ? ExitStatus::done : ExitStatus::displayMissing;
}

static ExitStatus apply(config::Reading &reading) {
    if (setMirrorConfig(reading.text.data()) == 1)
        return ExitStatus::done;
    fprintf(stderr,
            "Capturing display %u was refused.\n"
            "  On macOS: allow screen recording for this program (or its terminal) in the privacy\n"
            "  settings, and start it again.\n"
            "  On X11: the display went away, the server grants no capture, or memory ran out.\n",
            static_cast<std::uint32_t>(reading.document.displayID));
    return ExitStatus::captureRefused;
}

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
    if (startMirror() != 1) {
        fprintf(stderr, "Mirroring could not be started%s.\n",
                document.devices.empty() ? ": the document has no devices" : "");
        return ExitStatus::startFailed;
    }
    const auto display = static_cast<std::uint32_t>(document.displayID);
    const std::string lights = describeLights(document);
    printf("Mirroring display %u in %s mode onto %s. Ctrl-C stops.\n", display,
           modeName(document.mode), lights.c_str());
    const int signum = signals.wait(seconds);
    if (signum != 0)
        printf("Stopping: %s.\n", strsignal(signum));
    if (stopMirror() != 1) {
        fputs("Mirroring could not be stopped in order.\n", stderr);
        return ExitStatus::failed;
    }
    const std::chrono::duration<double> length = std::chrono::steady_clock::now() - begin;
    printf("Mirrored display %u for %.1f s onto %s.\n", display, length.count(), lights.c_str());
    return ExitStatus::done;
}

static ExitStatus run(const RunOptions &options) {
    config::Reading reading;
    if (const auto status = load(options.path, reading); status != ExitStatus::done)
        return status;
    // Not before the document has been read: Ctrl-C must end a wait for standard input.
    const StopSignals signals;
    if (const auto status = checkSurroundings(options.path, reading.document);
        status != ExitStatus::done)
        return status;
    if (const auto status = apply(reading); status != ExitStatus::done)
        return status;
    return mirror(reading.document, signals, options.seconds);
}

// The timer's range everywhere; above all no "nan", which no comparison refuses.
static std::string checkSeconds(const std::string &text) {
    constexpr double most = 1e8;
    double value = 0.0;
    if (CLI::detail::lexical_cast(text, value) && value > 0.0 && value <= most)
        return {};
    return "expected a number of seconds above 0 and up to 100000000, found " + text;
}

void addRunCommand(CLI::App &program, Action &chosen) {
    auto *command = program.add_subcommand("run", "Mirror as a configuration document says");
    const auto options = std::make_shared<RunOptions>();
    command->add_option("CONFIG", options->path, "The document; - reads standard input")
        ->required();
    command->add_option("--seconds", options->seconds, "Stop by itself after so many seconds")
        ->check(CLI::Validator(checkSeconds, "SECONDS"));
    command->footer("Runs until SIGINT (Ctrl-C), SIGTERM or SIGHUP and then exits with 0: a run\n"
                    "that was stopped has done all that it was asked to.\n\n" +
                    exitStatusHelp());
    command->callback([&chosen, options] { chosen = [options] { return run(*options); }; });
}

} // namespace mirrorctl
