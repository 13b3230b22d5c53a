// mirrorctl run
#include "tools/lights/text.h"
#include "tools/mirrorctl/commands.h"
#include "tools/mirrorctl/mirroring.h"
#include "tools/mirrorctl/run/run.h"

#include <cstdio>
#include <unistd.h>

namespace mirrorctl {

struct RunOptions {
    std::string path;
    std::optional<std::int32_t> mode;
    std::optional<double> seconds;
    bool json = false;
    bool uncounted = false;
    bool once = false;
};

// The text for the library: unchanged unless there is a counter or another mode.
static std::string textFor(const RunOptions &options, const config::Reading &reading,
                           const std::optional<FrameCounter> &counter) {
    if (!counter && !options.mode)
        return reading.text;
    config::Document document = reading.document;
    if (counter)
        document.devices.push_back(counter->device());
    return config::documentText(document);
}

static ExitStatus run(const RunOptions &options) {
    config::Reading reading;
    if (const auto status = load(options.path, options.mode, reading); status != ExitStatus::Done)
        return status;
    // Constructed after the document has been read: Ctrl-C must end a wait for standard input.
    const StopSignals signals;
    LibraryMessages messages;
    std::optional<FrameCounter> counter;
    // Without devices there is nothing to count, and the library must refuse to start.
    if (!options.uncounted && !reading.document.devices.empty())
        counter.emplace(reading.document);
    if (counter && !counter->reason().empty()) {
        std::fprintf(stderr, "Frames are not counted: no loopback address is free (%s).\n",
                     counter->reason().c_str());
        counter.reset();
    }
    RunPlan plan{reading.document, textFor(options, reading, counter),
                 counter ? &*counter : nullptr, options.seconds, options.once};
    if (options.json)
        plan.style = ReportStyle::Json;
    else if (lights::showsColours(messages.output()))
        plan.style = ReportStyle::Live;
    Run run(plan, signals, messages);
    auto status = untilSignal(signals, "Nothing was mirrored", [&] {
        auto outcome = checkRequirements(options.path, reading, true);
        if (outcome == ExitStatus::Done && signals.firstSignal() == 0)
            outcome = apply(plan.text, plan.document.displayID);
        if (outcome != ExitStatus::Done)
            return outcome;
        if (signals.firstSignal() != 0)
            return ExitStatus::NothingSent;
        // From here on there is a run, which mirror() stops properly.
        return run.startFirst();
    });
    if (status == ExitStatus::Done)
        status = run.mirror();
    if (status != ExitStatus::Done)
        messages.read(true);
    return status;
}

void addRunCommand(CLI::App &program, ExitStatus &status) {
    auto *command = program.add_subcommand("run", "Mirror as a configuration document says");
    const auto options = std::make_shared<RunOptions>();
    addConfig(*command, options->path);
    addMode(*command, options->mode,
            "match, melt, fade or palette, or 0 to 3: instead of the document's mode");
    checkSeconds(
        command->add_option("--seconds", options->seconds, "Stop by itself after so many seconds"));
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
        "and the last error that the library reported; with --seconds also a progress bar.\n"
        "\n"
        "When the display server goes away, the lights keep their last colours, and the display\n"
        "is mirrored again as soon as the server is back with it. Both are reported, as is a\n"
        "server that hangs. With --once the run ends then, with 74.\n"
        "\n"
        "How frames are counted: the library does not count them, so mirrorctl adds one device\n"
        "without panels to the end of the configuration: a loopback address at which it listens\n"
        "itself. Each datagram that arrives there means that one frame has been sent to all other\n"
        "devices; it does not show that the lights received it. Melt and fade mode send only when\n"
        "the screen's colour changes. Palette mode sends to each panel at its own times; there\n"
        "the added device has one panel and shows only that the run is still active.\n\n");
    onCommand(*command, status, options, run);
}

} // namespace mirrorctl
