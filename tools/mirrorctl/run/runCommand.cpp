// mirrorctl run
#include "tools/config/modes.h"
#include "tools/mirrorctl/arguments.h"
#include "tools/mirrorctl/commands.h"
#include "tools/mirrorctl/run/run.h"
#include "tools/mirrorctl/steps.h"
#include "tools/mirrorctl/swatch.h"

#include <cstdio>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <unistd.h>

namespace mirrorctl {

struct RunOptions {
    std::string path;
    std::optional<std::string> mode;
    std::optional<double> seconds;
    bool json = false;
    bool uncounted = false;
    bool once = false;
};

static constexpr char nothingMirrored[] = "Nothing was mirrored";

static Telling howToTell(const RunOptions &options) {
    if (options.json)
        return Telling::json;
    return showsColours(STDOUT_FILENO) ? Telling::live : Telling::plain;
}

static ExitStatus run(const RunOptions &options) {
    config::Reading reading;
    const auto mode = options.mode ? config::modeNumber(*options.mode) : std::nullopt;
    if (const auto status = load(options.path, mode, reading); status != ExitStatus::done)
        return status;
    // Not before the document has been read: Ctrl-C must end a wait for standard input.
    const StopSignals signals;
    RunPlan plan{reading.document, mode ? withMode(reading.text, *mode) : reading.text,
                 options.seconds, options.once, howToTell(options)};
    LibraryWords words;
    std::optional<FrameWitness> witness;
    // Without devices there is nothing to count, and the library is to refuse.
    if (!options.uncounted && !plan.document.devices.empty())
        witness.emplace(plan.document);
    if (witness && !witness->isThere()) {
        fprintf(stderr, "Frames are not counted: no loopback address is free (%s).\n",
                witness->reason().c_str());
        witness.reset();
    }
    if (witness)
        plan.text = witness->joined(plan.text);
    Run run(plan, signals, witness ? &*witness : nullptr, words);
    const std::function<ExitStatus()> steps[] = {
        [&] { return checkSurroundings(options.path, reading); },
        [&] { return apply(plan.text, plan.document.displayID); },
        [&] { return run.startFirst(); },
    };
    auto status = untilSignal(signals, nothingMirrored, [&] {
        for (const auto &step : steps) {
            if (const auto outcome = step(); outcome != ExitStatus::done)
                return outcome;
            // From the last step on there is a run, which is stopped in order.
            if (&step != std::end(steps) - 1 && signals.take() != 0) {
                sayInterrupted(nothingMirrored, signals.take());
                return ExitStatus::nothingSent;
            }
        }
        return ExitStatus::done;
    });
    if (status == ExitStatus::done)
        status = run.goOn();
    if (status != ExitStatus::done)
        words.read(true);
    return status;
}

void addRunCommand(CLI::App &program, Action &chosen) {
    auto *command = program.add_subcommand("run", "Mirror as a configuration document says");
    const auto options = std::make_shared<RunOptions>();
    command->add_option("CONFIG", options->path, "The document; - reads standard input")
        ->required()
        ->type_name("");
    command
        ->add_option("--mode", options->mode,
                     "match, melt, fade or palette, or 0 to 3: instead of the document's mode")
        ->type_name("MODE")
        ->check(modeArgument());
    command->add_option("--seconds", options->seconds, "Stop by itself after so many seconds")
        ->type_name("SECONDS")
        ->check(secondsArgument());
    command->add_flag(
        "--json", options->json,
        "Print one object a line for scripts: at the start, every second, at the end");
    command->add_flag("--no-count", options->uncounted,
                      "Hand the library the document as it is, and count no frames");
    command->add_flag("--once", options->once,
                      "End when the display server goes away, instead of waiting for it");
    command->footer(
        "Runs until SIGINT (Ctrl-C), SIGTERM or SIGHUP and then exits with 0: a run that was\n"
        "stopped has done all that it was asked to. On a terminal the last line is live: frames\n"
        "sent, frames a second, jitter (the standard deviation of the time between two frames)\n"
        "and the last error that the library reported; with --seconds also how far it is.\n"
        "\n"
        "When the display server goes away, the lights keep their last colours, and the display\n"
        "is mirrored again as soon as the server is back with it. Both is told, as is a server\n"
        "that hangs. With --once the run ends then, with 74.\n"
        "\n"
        "How frames are counted: the library has no counter, so it is handed one device more, a\n"
        "loopback address at which this program listens. It has no panels and comes last; each of\n"
        "its datagrams, two bytes long, is one frame that has been sent to all devices before.\n"
        "That says that frames leave, not that the lights get them. Melt and fade mode send only\n"
        "when the screen's colour changes. Palette mode sends each panel something in its own\n"
        "time; there the device has one panel and shows no more than that the run is alive.\n\n" +
        exitStatusHelp());
    command->callback([&chosen, options] { chosen = [options] { return run(*options); }; });
}

} // namespace mirrorctl
