// mirrorctl snapshot
#include "mirror/mirrorInterface.h"
#include "tools/config/modes.h"
#include "tools/lights/address.h"
#include "tools/lights/text.h"
#include "tools/mirrorctl/commands.h"
#include "tools/mirrorctl/libraryCall.h"
#include "tools/mirrorctl/mirroring.h"
#include "tools/mirrorctl/server.h"
#include "tools/mirrorctl/snapshot/sentFrames.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <stdexcept>
#include <unistd.h>
#include <utility>

namespace mirrorctl {

using config::matchMode;
using config::paletteMode;

struct SnapshotOptions {
    std::string path;
    double seconds = 5.0;
    bool json = false;
};

// What was sent at one moment.
struct Snapshot {
    std::string text; // the library's own
    std::vector<SentFrame> frames;
    std::vector<std::size_t> devices; // the index of each frame's device
};

static std::string fetchText() {
    const int size = getSizeOfStreamFrameJson();
    if (size < 0)
        throw std::runtime_error("the library could not make a text of the frames sent");
    std::string text(static_cast<std::size_t>(size), '\0');
    if (size > 0 && getStreamFrameJson(text.data()) != 0)
        throw std::runtime_error("the library could not hand out the frames sent");
    return text;
}

// Waits at most about a second. Nothing if nothing was sent, or if the devices are unclear; with
// `json` also if the library's text would imply the wrong devices, since it has no gaps for devices
// that were sent nothing.
static std::optional<Snapshot> capture(const config::Document &document, bool json) {
    if (captureCurrentStreamFrames() != 0)
        return std::nullopt;
    Snapshot snapshot;
    snapshot.text = fetchText();
    if (snapshot.text.empty())
        return std::nullopt;
    snapshot.frames = readSentFrames(snapshot.text);
    const auto devices = devicesOf(snapshot.frames, document.devices);
    if (!devices || (json && !devices->empty() && devices->back() != devices->size() - 1))
        return std::nullopt;
    snapshot.devices = *devices;
    return snapshot;
}

static const char *reasonForNothing(std::int32_t mode) {
    switch (mode) {
    case matchMode:
        return "This mode sends all the time, so mirroring ended by itself, or is stuck.";
    case paletteMode:
        return "This mode sends to each panel only every second or so, and so far it is not clear\n"
               "which device was sent what. Give it more time with --seconds.";
    default:
        return "This mode sends only when the screen's dominant colour changes, and begins with\n"
               "black as the last colour. Change what the screen shows, or give it more time with\n"
               "--seconds.";
    }
}

// The first useful snapshot. Match and palette mode send before they have received a screen frame,
// so an all-black snapshot is returned only if no other comes.
static std::optional<Snapshot> await(const config::Document &document,
                                     const SnapshotOptions &options, const StopSignals &signals) {
    const bool sendsUnseen = document.mode == matchMode || document.mode == paletteMode;
    const auto begin = std::chrono::steady_clock::now();
    std::optional<Snapshot> dark;
    bool hasFrame = false; // whether one had arrived before `dark` was captured
    for (;;) {
        auto snapshot = capture(document, options.json);
        // The screen's first frame may arrive while panel colours are being sent, so that only some
        // panels show it. The next frame sent is complete.
        if (snapshot && document.mode == matchMode && showsLight(snapshot->frames))
            snapshot = capture(document, options.json);
        if (snapshot && sendsUnseen && !showsLight(snapshot->frames))
            dark = std::move(snapshot);
        else if (snapshot)
            return snapshot;
        if (signals.firstSignal() != 0)
            return std::nullopt;
        const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin;
        if (dark && passed.count() >= std::min(options.seconds, darknessSeconds)) {
            // Black proves nothing while the server hangs.
            if (reportSilentServer())
                return std::nullopt;
            // In palette mode panels may stay black for over a second after the first frame.
            if (passed.count() >= options.seconds || (hasFrame && document.mode == matchMode))
                return dark;
            hasFrame = !fetchPalette().isDark();
            if (!hasFrame && !isLit(document.displayID))
                return dark;
        }
        if (passed.count() >= options.seconds) {
            std::fprintf(stderr, "No snapshot: nothing was sent in %s mode within %.1f s.\n%s\n",
                         config::modeName(document.mode), passed.count(),
                         reasonForNothing(document.mode));
            reportSilentServer();
            return std::nullopt;
        }
    }
}

// One line per record, in columns, and one for each device that was sent nothing.
static void print(const Snapshot &snapshot, const std::vector<config::DeviceEntry> &devices) {
    const bool coloured = lights::showsColours(STDOUT_FILENO);
    std::size_t widest = sizeof "address" - 1;
    for (const auto &device : devices)
        widest = std::max(widest, lights::endpointText(device.ip, device.port()).size());
    const int width = static_cast<int>(widest);

    std::printf("%6s  %-*s  %5s  colour\n", "device", width, "address", "panel");
    std::size_t next = 0;
    for (std::size_t d = 0; d < devices.size(); ++d) {
        const std::string address = lights::endpointText(devices[d].ip, devices[d].port());
        const bool wasSent = next < snapshot.devices.size() && snapshot.devices[next] == d;
        const SentFrame frame = wasSent ? snapshot.frames[next++] : SentFrame();
        if (frame.records.empty())
            std::printf("%6zu  %-*s  %5s  %s\n", d, width, address.c_str(), "-",
                        wasSent ? "no panels" : "nothing in this frame");
        for (const lights::Record &record : frame.records)
            std::printf("%6zu  %-*s  %5u  %s%s\n", d, width, address.c_str(), record.id,
                        coloured ? (swatch(record.colour) + " ").c_str() : "",
                        hexText(record.colour).c_str());
    }
}

static ExitStatus showSnapshot(const SnapshotOptions &options) {
    config::Reading reading;
    std::optional<Snapshot> snapshot;
    const auto work = [&](const StopSignals &signals) {
        snapshot = await(reading.document, options, signals);
        return snapshot ? ExitStatus::Done : ExitStatus::NothingSent;
    };
    const auto status = mirrorBriefly(options.path, true, "No snapshot", reading, work);
    if (status != ExitStatus::Done)
        return status;
    if (options.json)
        std::puts(snapshot->text.c_str());
    else
        print(*snapshot, reading.document.devices);
    return ExitStatus::Done;
}

void addSnapshotCommand(CLI::App &program, ExitStatus &status) {
    auto *command =
        program.add_subcommand("snapshot", "Mirror for a moment and print what was sent");
    const auto options = std::make_shared<SnapshotOptions>();
    addConfig(*command, options->path);
    checkSeconds(command->add_option("--seconds", options->seconds,
                                     "How long to wait for something to be sent (default 5)"));
    command->add_flag("--json", options->json, "Print the library's own text");
    command->footer(
        "THE LIGHTS CHANGE: the document's devices are sent frames in the document's mode for as\n"
        "long as this takes, and keep the last colours they were sent.\n"
        "\n"
        "Panels are listed with the identifiers that the datagrams carry. Melt and fade mode send\n"
        "only when the screen's dominant colour changes. Palette mode sends to the panels that\n"
        "are due, so some panels and devices may be missing. Match and palette mode begin before\n"
        "they have seen the screen: panels that are black for 2 seconds are reported as black "
        "only\n"
        "if the screen is. The wait may last a second longer than --seconds says.\n\n");
    onCommand(*command, status, options, showSnapshot);
}

} // namespace mirrorctl
