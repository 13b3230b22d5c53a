// mirrorctl palette
#include "tools/mirrorctl/commands.h"
#include "tools/mirrorctl/libraryCall.h"
#include "tools/mirrorctl/libraryTalk.h"
#include "tools/mirrorctl/lightlessDocument.h"
#include "tools/mirrorctl/screenPalette.h"
#include "tools/mirrorctl/steps.h"

#include <cstdio>
#include <memory>
#include <unistd.h>

namespace mirrorctl {

struct PaletteOptions {
    std::string path;
    bool json = false;
};

static void printTable(const ScreenPalette &palette) {
    const bool coloured = showsColours(STDOUT_FILENO);
    printf("%s%-7s  %3s  %3s  %3s\n", coloured ? "      " : "", "hex", "R", "G", "B");
    for (const Colour &colour : palette.colours)
        printf("%s%s  %3u  %3u  %3u\n", coloured ? (swatch(colour) + "  ").c_str() : "",
               hexText(colour).c_str(), colour.red, colour.green, colour.blue);
}

static ExitStatus measure(const PaletteOptions &options, const config::Reading &reading,
                          const StopSignals &signals, ScreenPalette &palette) {
    const LibraryTalk talk;
    const config::Document &document = reading.document;
    if (const auto status = checkDisplay(options.path, reading); status != ExitStatus::done)
        return status;
    if (const auto status = apply(documentWithoutLights(document.displayID), document.displayID);
        status != ExitStatus::done)
        return status;
    if (const auto status = start(1); status != ExitStatus::done)
        return status;
    const auto measured =
        awaitPalette(static_cast<std::uint32_t>(document.displayID), signals, palette);
    const auto stopped = stop();
    return measured == ExitStatus::done ? stopped : measured;
}

static ExitStatus showPalette(const PaletteOptions &options) {
    config::Reading reading;
    if (const auto status = load(options.path, std::nullopt, reading); status != ExitStatus::done)
        return status;
    const StopSignals signals;
    ScreenPalette palette;
    const auto work = [&] { return measure(options, reading, signals, palette); };
    if (const auto status = untilSignal(signals, noPalette, work); status != ExitStatus::done)
        return status;
    if (options.json || !isTerminal(STDOUT_FILENO))
        puts(palette.text.c_str());
    else
        printTable(palette);
    return ExitStatus::done;
}

void addPaletteCommand(CLI::App &program, Action &chosen) {
    auto *command = program.add_subcommand("palette", "Print the colours that the screen shows");
    const auto options = std::make_shared<PaletteOptions>();
    command
        ->add_option("CONFIG", options->path,
                     "The document whose display is meant; - reads standard input")
        ->required()
        ->type_name("");
    command->add_flag("--json", options->json,
                      "Print the library's own text, as is done off a terminal");
    command->footer(
        "Most frequent hue first, eight at most.\n"
        "\n"
        "The lights are left alone: of the document only the display is used. The library needs\n"
        "a run to see the screen; its one device has no panels, and nothing is sent to anybody.\n"
        "\n"
        "Takes as long as the first frame does. If the display is black, black is the answer "
        "after\n"
        "2 seconds; if it is not, and no other colour comes, after 5.\n\n" +
        exitStatusHelp());
    command->callback([&chosen, options] { chosen = [options] { return showPalette(*options); }; });
}

} // namespace mirrorctl
