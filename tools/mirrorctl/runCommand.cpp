// mirrorctl run
#include "tools/config/modes.h"
#include "tools/mirrorctl/arguments.h"
#include "tools/mirrorctl/commands.h"
#include "tools/mirrorctl/frameWitness.h"
#include "tools/mirrorctl/libraryWords.h"
#include "tools/mirrorctl/runReport.h"
#include "tools/mirrorctl/steps.h"
#include "tools/mirrorctl/stopSignals.h"
#include "tools/mirrorctl/swatch.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <sys/ioctl.h>
#include <unistd.h>

namespace mirrorctl {

struct RunOptions {
    std::string path;
    std::optional<std::string> mode;
    std::optional<double> seconds;
    bool json = false;
    bool uncounted = false;
};

// How the run is told: to a script, on a terminal's last line, or at its beginning and end only.
enum class Telling { json, live, plain };

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

static std::size_t terminalColumns(int fd) {
    winsize size = {};
    if (ioctl(fd, TIOCGWINSZ, &size) != 0 || size.ws_col == 0)
        return 80;
    return size.ws_col;
}

namespace {

// One run, from the start on. Host thread.
class Run {
public:
    Run(const config::Document &documentToMirror, const RunOptions &wishes, Telling how,
        FrameWitness *counter, LibraryWords &library)
        : document(documentToMirror), options(wishes), telling(how), witness(counter),
          words(library) {}

    ExitStatus mirror(const StopSignals &signals);

private:
    using Clock = std::chrono::steady_clock;

    // Until the end; the signal that ended it, or 0.
    int goOn(const StopSignals &signals);
    void takeIn();
    // What the library said when a run ended by itself; null while it goes on.
    const char *ownEnd() const;
    RunState state(bool isOver) const;
    void tell(const char *event, bool isOver);

    double elapsed() const { return std::chrono::duration<double>(Clock::now() - begin).count(); }

    const config::Document &document;
    const RunOptions &options;
    const Telling telling;
    FrameWitness *const witness; // null: nobody counts
    LibraryWords &words;
    Clock::time_point begin;
    double lastFrame = 0.0; // since the beginning, in seconds
};

} // namespace

void Run::takeIn() {
    words.read(telling == Telling::plain);
    if (!witness)
        return;
    const auto before = witness->tally().frames();
    witness->read();
    if (witness->tally().frames() > before)
        lastFrame = elapsed();
}

const char *Run::ownEnd() const {
    for (const char *line : {"Stream start failed!", "Error during runMirror"})
        if (words.haveHeard(line))
            return line;
    return nullptr;
}

RunState Run::state(bool isOver) const {
    RunState now;
    now.mode = document.mode;
    now.elapsed = elapsed();
    now.planned = options.seconds;
    now.isCounted = witness != nullptr;
    now.silence = now.elapsed - lastFrame;
    now.errors = words.lines();
    now.lastError = words.last();
    if (witness) {
        now.frames = witness->tally().frames();
        now.pace = isOver ? witness->tally().wholePace() : witness->tally().recentPace();
    }
    return now;
}

void Run::tell(const char *event, bool isOver) {
    FILE *out = words.output();
    if (telling == Telling::json)
        fprintf(out, "%s\n", jsonLine(event, state(isOver)).c_str());
    else if (telling == Telling::live && isOver)
        fputs("\r\x1b[K", out);
    else if (telling == Telling::live)
        fprintf(out, "\r\x1b[K%s",
                liveLine(state(false), terminalColumns(fileno(out)) - 1).c_str());
    fflush(out);
}

int Run::goOn(const StopSignals &signals) {
    const double pause = telling == Telling::json ? 1.0 : 0.25;
    double nextTelling = telling == Telling::plain ? 0.0 : pause;
    for (;;) {
        takeIn();
        const double now = elapsed();
        if ((options.seconds && now >= *options.seconds) || ownEnd())
            return 0;
        if (nextTelling > 0.0 && now >= nextTelling) {
            tell("running", false);
            nextTelling = now + pause;
        }
        std::optional<double> wait;
        if (options.seconds)
            wait = *options.seconds - now;
        if (nextTelling > 0.0)
            wait = std::min(wait.value_or(pause), nextTelling - now);
        if (const int signum = signals.waitForInput(
                {witness ? witness->descriptor() : -1, words.descriptor()}, wait))
            return signum;
    }
}

ExitStatus Run::mirror(const StopSignals &signals) {
    begin = Clock::now();
    if (const auto status = start(document.devices.size()); status != ExitStatus::done)
        return status;
    FILE *out = words.output();
    const auto display = static_cast<std::uint32_t>(document.displayID);
    const std::string lights = describeLights(document);
    const bool isJson = telling == Telling::json;
    if (!isJson)
        fprintf(out, "Mirroring display %u in %s mode onto %s. Ctrl-C stops.\n", display,
                config::modeName(document.mode), lights.c_str());
    tell("started", false);
    const int signum = goOn(signals);
    if (telling == Telling::live)
        tell("", true);
    if (signum != 0 && !isJson)
        // NOLINTNEXTLINE(concurrency-mt-unsafe): a known signal has a constant name
        fprintf(out, "Stopping: %s.\n", strsignal(signum));
    if (const auto status = stop(); status != ExitStatus::done)
        return status;
    takeIn();
    if (const char *reason = ownEnd()) {
        fprintf(stderr, "Mirroring ended by itself: %s\n", reason);
        return ExitStatus::startFailed;
    }
    if (isJson) {
        tell("stopped", true);
        return ExitStatus::done;
    }
    const RunState final = state(true);
    fprintf(out, "Mirrored display %u for %.1f s onto %s.\n%s", display, final.elapsed,
            lights.c_str(), summary(final).c_str());
    return ExitStatus::done;
}

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
    const Telling telling = howToTell(options);
    LibraryWords words;
    if (const auto status = checkSurroundings(options.path, reading); status != ExitStatus::done)
        return status;
    const config::Document &document = reading.document;
    std::string text = mode ? withMode(reading.text, *mode) : reading.text;
    std::optional<FrameWitness> witness;
    // Without devices there is nothing to count, and the library is to refuse.
    if (!options.uncounted && !document.devices.empty())
        witness.emplace(document);
    if (witness && !witness->isThere()) {
        fprintf(stderr, "Frames are not counted: no loopback address is free (%s).\n",
                witness->reason().c_str());
        witness.reset();
    }
    if (witness)
        text = witness->joined(text);
    auto status = apply(text, document.displayID);
    if (status == ExitStatus::done)
        status =
            Run(document, options, telling, witness ? &*witness : nullptr, words).mirror(signals);
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
    command->footer(
        "Runs until SIGINT (Ctrl-C), SIGTERM or SIGHUP and then exits with 0: a run that was\n"
        "stopped has done all that it was asked to. On a terminal the last line is live: frames\n"
        "sent, frames a second, jitter (the standard deviation of the time between two frames)\n"
        "and the last error that the library reported; with --seconds also how far it is.\n"
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
