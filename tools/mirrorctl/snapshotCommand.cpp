// mirrorctl snapshot
#include "mirror/mirrorInterface.h"
#include "tools/config/modes.h"
#include "tools/mirrorctl/arguments.h"
#include "tools/mirrorctl/commands.h"
#include "tools/mirrorctl/frameShares.h"
#include "tools/mirrorctl/libraryCall.h"
#include "tools/mirrorctl/libraryTalk.h"
#include "tools/mirrorctl/litDisplay.h"
#include "tools/mirrorctl/screenPalette.h"
#include "tools/mirrorctl/server.h"
#include "tools/mirrorctl/snapshotTable.h"
#include "tools/mirrorctl/steps.h"
#include "tools/mirrorctl/stopSignals.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <stdexcept>

namespace mirrorctl {

struct SnapshotOptions {
    std::string path;
    double seconds = 5.0;
    bool json = false;
};

// What was sent at one moment.
struct Snapshot {
    std::string text; // the library's own
    std::vector<SentFrame> frames;
    std::vector<std::size_t> shares; // the device of each frame
};

static constexpr char noSnapshot[] = "No snapshot";
static constexpr std::int32_t matchMode = 0;
static constexpr std::int32_t paletteMode = 3;

static std::string fetchText() {
    const int size = getSizeOfStreamFrameJson();
    if (size < 0)
        throw std::runtime_error("the library could not make a text of the frames sent");
    std::string text(static_cast<std::size_t>(size), '\0');
    if (size > 0 && getStreamFrameJson(text.data()) != 0)
        throw std::runtime_error("the library could not hand out the frames sent");
    return text;
}

// Waits about a second at most. Nothing when nothing was sent, or when it cannot be told to whom;
// for the library's own text also when that names the wrong devices, since it has no gaps for
// devices that were sent nothing.
static std::optional<Snapshot> capture(const config::Document &document, bool json) {
    if (captureCurrentStreamFrames() != 0)
        return std::nullopt;
    Snapshot snapshot;
    snapshot.text = fetchText();
    if (snapshot.text.empty())
        return std::nullopt;
    snapshot.frames = readSentFrames(snapshot.text);
    const auto shares = shareFrames(snapshot.frames, document.devices);
    if (!shares || (json && !shares->empty() && shares->back() != shares->size() - 1))
        return std::nullopt;
    snapshot.shares = *shares;
    return snapshot;
}

static const char *reasonForNothing(std::int32_t mode) {
    switch (mode) {
    case matchMode:
        return "This mode sends all the time, so mirroring ended by itself, or is stuck.";
    case paletteMode:
        return "This mode sends a panel something only every second or so, and nothing came of\n"
               "which it is clear to which device it was sent. Give it more time with --seconds.";
    default:
        return "This mode sends only when the screen's dominant colour changes, and begins with\n"
               "black as the last colour. Change what the screen shows, or give it more time with\n"
               "--seconds.";
    }
}

// The first snapshot worth showing. Match and palette mode send before they have seen the screen;
// what is only black is shown only if nothing else comes.
static std::optional<Snapshot> await(const config::Document &document,
                                     const SnapshotOptions &options, const StopSignals &signals) {
    const bool sendsUnseen = document.mode == matchMode || document.mode == paletteMode;
    const auto begin = std::chrono::steady_clock::now();
    std::optional<Snapshot> dark;
    bool hasFrame = false; // when it was captured
    for (;;) {
        auto snapshot = capture(document, options.json);
        if (snapshot && sendsUnseen && !showsLight(snapshot->frames))
            dark = std::move(snapshot);
        else if (snapshot)
            return snapshot;
        if (const int signum = signals.take()) {
            sayInterrupted(noSnapshot, signum);
            return std::nullopt;
        }
        const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin;
        if (dark && passed.count() >= std::min(options.seconds, darknessSeconds)) {
            // Black is no answer of a server that hangs.
            if (tellServerSilence())
                return std::nullopt;
            // In palette mode panels hold the black of before the first frame for over a second.
            if (passed.count() >= options.seconds || (hasFrame && document.mode == matchMode))
                return dark;
            hasFrame = !isDark(fetchPalette());
            if (!hasFrame && !isLit(static_cast<std::uint32_t>(document.displayID)))
                return dark;
        }
        if (passed.count() >= options.seconds) {
            fprintf(stderr, "No snapshot: nothing was sent in %s mode within %.1f s.\n%s\n",
                    config::modeName(document.mode), passed.count(),
                    reasonForNothing(document.mode));
            tellServerSilence();
            return std::nullopt;
        }
    }
}

static ExitStatus take(const SnapshotOptions &options, const config::Reading &reading,
                       const StopSignals &signals, std::optional<Snapshot> &snapshot) {
    const config::Document &document = reading.document;
    const LibraryTalk talk;
    if (const auto status = checkSurroundings(options.path, reading); status != ExitStatus::done)
        return status;
    if (const auto status = apply(reading.text, document.displayID); status != ExitStatus::done)
        return status;
    if (const auto status = start(document.devices.size()); status != ExitStatus::done)
        return status;
    snapshot = await(document, options, signals);
    const auto stopped = stop();
    return snapshot ? stopped : ExitStatus::nothingSent;
}

static ExitStatus showSnapshot(const SnapshotOptions &options) {
    config::Reading reading;
    if (const auto status = load(options.path, std::nullopt, reading); status != ExitStatus::done)
        return status;
    const StopSignals signals;
    std::optional<Snapshot> snapshot;
    const auto work = [&] { return take(options, reading, signals, snapshot); };
    if (const auto status = untilSignal(signals, noSnapshot, work); status != ExitStatus::done)
        return status;
    if (options.json)
        puts(snapshot->text.c_str());
    else
        printSnapshot(snapshot->frames, snapshot->shares, reading.document.devices);
    return ExitStatus::done;
}

void addSnapshotCommand(CLI::App &program, Action &chosen) {
    auto *command =
        program.add_subcommand("snapshot", "Mirror for a moment and print what was sent");
    const auto options = std::make_shared<SnapshotOptions>();
    command->add_option("CONFIG", options->path, "The document; - reads standard input")
        ->required()
        ->type_name("");
    command
        ->add_option("--seconds", options->seconds,
                     "How long to wait for something to be sent (default 5)")
        ->type_name("SECONDS")
        ->check(secondsArgument());
    command->add_flag("--json", options->json, "Print the library's own text");
    command->footer(
        "THE LIGHTS CHANGE: the document's devices are sent frames in the document's mode for as\n"
        "long as this takes, and keep the last colours they were sent.\n"
        "\n"
        "Panels are listed with the identifiers that the datagrams carry. Melt and fade mode send\n"
        "only when the screen's dominant colour changes. Palette mode sends to the panels that\n"
        "are due, so some panels and devices may be missing. Match and palette mode begin before\n"
        "they have seen the screen; after 2 seconds of nothing but black, black is the answer if\n"
        "the screen is black there. The wait may last a second longer than --seconds says.\n\n" +
        exitStatusHelp());
    command->callback(
        [&chosen, options] { chosen = [options] { return showSnapshot(*options); }; });
}

} // namespace mirrorctl
