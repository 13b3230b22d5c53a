// mirrorctl palette
#include "mirror/mirrorInterface.h"
#include "tools/lights/text.h"
#include "tools/mirrorctl/commands.h"
#include "tools/mirrorctl/libraryCall.h"
#include "tools/mirrorctl/mirroring.h"
#include "tools/mirrorctl/server.h"

#include <chrono>
#include <cstdio>
#include <unistd.h>

namespace mirrorctl {

// Waits for the palette of the first frame of a run that was just started in palette mode. A
// palette that is not dark proves that a frame has arrived; black is accepted after
// `darknessSeconds` if the display is black, else after `lateFrameSeconds`.
static ExitStatus awaitPalette(std::int32_t displayID, const StopSignals &signals,
                               Palette &palette) {
    using Clock = std::chrono::steady_clock;
    constexpr double lateFrameSeconds = 5.0;
    const auto begin = Clock::now();
    bool isCycling = false;
    for (;;) {
        // Returns once per cycle, whether or not something was sent. The run fills its sample grid
        // before the first cycle, and has no palette until then.
        if (captureCurrentStreamFrames() == 0) {
            isCycling = true;
            palette = fetchPalette();
            if (!palette.isDark())
                return ExitStatus::Done;
        }
        if (signals.firstSignal() != 0)
            return ExitStatus::NothingSent;
        const std::chrono::duration<double> passed = Clock::now() - begin;
        if (passed.count() < darknessSeconds)
            continue;
        // Black proves nothing while the server hangs.
        if (reportSilentServer())
            return ExitStatus::NothingSent;
        if (!isCycling) {
            std::fputs("No palette: mirroring ended by itself, or is stuck.\n", stderr);
            return ExitStatus::NothingSent;
        }
        if (passed.count() >= lateFrameSeconds || !isLit(displayID))
            return ExitStatus::Done;
    }
}

struct PaletteOptions {
    std::string path;
    bool json = false;
};

static void printTable(const Palette &palette) {
    const bool coloured = lights::showsColours(STDOUT_FILENO);
    std::printf("%s%-7s  %3s  %3s  %3s\n", coloured ? "      " : "", "hex", "R", "G", "B");
    for (const lights::Colour &colour : palette.colours)
        std::printf("%s%s  %3u  %3u  %3u\n", coloured ? (swatch(colour) + "  ").c_str() : "",
                    hexText(colour).c_str(), colour.red, colour.green, colour.blue);
}

static ExitStatus showPalette(const PaletteOptions &options) {
    config::Reading reading;
    Palette palette;
    const auto work = [&](const StopSignals &signals) {
        return awaitPalette(reading.document.displayID, signals, palette);
    };
    const auto status = mirrorBriefly(options.path, false, "No palette", reading, work);
    if (status != ExitStatus::Done)
        return status;
    if (options.json || isatty(STDOUT_FILENO) != 1)
        std::puts(palette.text.c_str());
    else
        printTable(palette);
    return ExitStatus::Done;
}

void addPaletteCommand(CLI::App &program, ExitStatus &status) {
    auto *command = program.add_subcommand("palette", "Print the colours that the screen shows");
    const auto options = std::make_shared<PaletteOptions>();
    addConfig(*command, options->path,
              "The document whose display is meant; - reads standard input");
    command->add_flag("--json", options->json,
                      "Print the library's own text, as is done when the output is not a terminal");
    command->footer(
        "Most frequent hue first, eight at most.\n"
        "\n"
        "The lights are left alone: of the document only the display is used. The library needs\n"
        "a run to see the screen; its one device has no panels, and nothing is sent to anybody.\n"
        "\n"
        "Waits for the first frame. If no colour but black comes, reports black: after 2 seconds\n"
        "if the display is black, otherwise after 5.\n\n");
    onCommand(*command, status, options, showPalette);
}

} // namespace mirrorctl
