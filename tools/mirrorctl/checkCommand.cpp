// mirrorctl check
#include "tools/config/configDocument.h"
#include "tools/config/places.h"
#include "tools/config/textFile.h"
#include "tools/mirrorctl/arguments.h"
#include "tools/mirrorctl/commands.h"
#include "tools/mirrorctl/findings.h"
#include "tools/mirrorctl/libraryTalk.h"
#include "tools/mirrorctl/server.h"
#include "tools/mirrorctl/suitability.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <memory>

namespace mirrorctl {

struct CheckOptions {
    std::string path;
    std::string screen;
    bool needsDisplay = false;
    bool ignoresDisplays = false;
    bool strict = false;
    bool json = false;

    bool looksForDisplay() const { return needsDisplay || (!ignoresDisplays && screen.empty()); }
};

// What was found around the document: the size to compare its panels' places with, and whether its
// display is there.
struct Surroundings {
    std::optional<config::ScreenSize> screen;
    std::vector<config::Problem> problems; // of the display, without places
    std::string remark;
};

static DisplayList askLibrary() {
    const LibraryTalk talk;
    return listDisplays();
}

// Looks for the document's display. That there is no server to ask, or that it hangs, is no finding
// unless the display is needed.
static void lookForDisplay(const config::Document &document, bool isNeeded, Surroundings &around) {
    // Its connection lasts while the library asks: servers may reset when their last client leaves.
    const ServerWatch watch;
    constexpr double patience = 3.0; // a server that is only busy should not be taken for hung
    if (isServerSilent(watch, patience)) {
        const std::string words = serverName() + " does not answer";
        if (isNeeded)
            around.problems = {{"/displayID", "cannot be looked for, since " + words,
                                "is it stopped or overloaded? mirrorctl doctor says more"}};
        else
            around.remark = "The displays are not known, since " + words + ".";
        return;
    }
    DisplayList list;
    try {
        list = askLibrary();
    } catch (const std::exception &error) {
        if (isNeeded)
            throw;
        around.remark = "The displays are not known: " + std::string(error.what()) + ".";
        return;
    }
    if (list.displays.empty() && !isNeeded && watch.state() != ServerWatch::State::answering) {
        around.remark = "There is no display here to look at.";
        return;
    }
    around.problems = displayProblems(document, list);
    const auto wanted = static_cast<std::uint32_t>(document.displayID);
    for (const Display &display : list.displays)
        if (display.displayID == wanted && display.width > 0 && display.height > 0)
            around.screen = config::ScreenSize{display.width, display.height};
        else if (display.displayID == wanted)
            around.remark = "The display gives no picture, so its size is not known.";
}

static Surroundings lookAround(const CheckOptions &options, const config::Reading &reading) {
    Surroundings around;
    const config::Unsound unsound(reading.problems);
    if (options.looksForDisplay() && !unsound.covers("/displayID"))
        lookForDisplay(reading.document, options.needsDisplay, around);
    if (!options.screen.empty())
        around.screen = parseSize(options.screen);
    if (!around.screen && !unsound.covers("/devices"))
        around.remark += std::string(around.remark.empty() ? "" : " ") +
                         "The panels' places were not checked; --screen names the display's size.";
    return around;
}

static void append(std::vector<config::Problem> &problems, std::vector<config::Problem> more) {
    problems.insert(problems.end(), std::make_move_iterator(more.begin()),
                    std::make_move_iterator(more.end()));
}

// The status of a run, which would be refused for the same reasons in the same order.
static ExitStatus statusOf(const std::vector<config::Problem> &document,
                           const std::vector<config::Problem> &modes,
                           const std::vector<config::Problem> &addresses,
                           const std::vector<config::Problem> &displays) {
    if (!modes.empty() || std::any_of(document.begin(), document.end(), isError))
        return ExitStatus::documentFaulty;
    if (!addresses.empty())
        return ExitStatus::addressFaulty;
    return displays.empty() ? ExitStatus::done : ExitStatus::displayMissing;
}

static ExitStatus review(const CheckOptions &options, const std::string &text, Findings &findings) {
    config::Reading reading = config::readText(text);
    const Surroundings around = lookAround(options, reading);
    const config::Unsound unsound(reading.problems);
    const auto isUnsound = [&](const auto &problem) { return unsound.covers(problem.pointer); };
    reading = config::reviewText(text, around.screen);
    auto modes = modeProblems(reading.document);
    std::erase_if(modes, isUnsound);
    auto addresses = addressProblems(reading.document);
    std::erase_if(addresses, isUnsound);
    const ExitStatus status = statusOf(reading.problems, modes, addresses, around.problems);

    std::vector<config::Problem> placeless = std::move(modes);
    append(placeless, std::move(addresses));
    append(placeless, around.problems);
    if (!placeless.empty()) // otherwise the text may not even parse
        config::locate(text, placeless);
    findings.problems = std::move(reading.problems);
    append(findings.problems, std::move(placeless));
    std::stable_sort(findings.problems.begin(), findings.problems.end(),
                     [](const auto &a, const auto &b) {
                         return std::pair(a.place.line, a.place.column) <
                                std::pair(b.place.line, b.place.column);
                     });
    findings.remark = around.remark;
    findings.screenKnown = around.screen.has_value();
    return status;
}

static ExitStatus checkDocument(const CheckOptions &options) {
    std::string reason;
    const auto text = config::readTextFile(options.path, reason);
    const std::string name = options.path == "-" ? "standard input" : options.path;
    if (!text) {
        fprintf(stderr, "%s: cannot be read: %s\n", name.c_str(), reason.c_str());
        return ExitStatus::fileUnreadable;
    }
    Findings findings;
    const ExitStatus status = review(options, *text, findings);
    if (options.json)
        puts(jsonText(name, findings).c_str());
    else
        print(name, findings);
    const bool isFlawed = options.strict && count(findings, config::Severity::warning) > 0;
    return status == ExitStatus::done && isFlawed ? ExitStatus::documentFaulty : status;
}

void addCheckCommand(CLI::App &program, Action &chosen) {
    auto *command =
        program.add_subcommand("check", "Report everything that is wrong with a configuration");
    const auto options = std::make_shared<CheckOptions>();
    command->add_option("CONFIG", options->path, "The document; - reads standard input")
        ->required()
        ->type_name("");
    command
        ->add_option("--screen", options->screen,
                     "The display's size in pixels, such as 1920x1080, instead of looking for the "
                     "display")
        ->type_name("WxH")
        ->check(sizeArgument());
    auto *display = command->add_flag("--display", options->needsDisplay,
                                      "Fail when no display server answers");
    command->add_flag("--no-display", options->ignoresDisplays, "Look for no display")
        ->excludes(display);
    command->add_flag("--strict", options->strict, "Let warnings count as faults");
    command->add_flag("--json", options->json, "Print for scripts");
    command->footer(
        "Reports everything at once: for each finding the line and column, the JSON pointer, what\n"
        "was expected and found, and how to fix it. A document without errors and warnings is\n"
        "fine; cautions follow after that word.\n"
        "\n"
        "  error     mirrorctl run refuses it: members missing or of the wrong type, a mode or a\n"
        "            display that does not exist, an address that no light can have\n"
        "  warning   accepted, but probably a mistake: panels off the screen, an address or an\n"
        "            identifier twice, members that the library does not read, values too large\n"
        "            for the datagrams\n"
        "  caution   good to know: in most modes the whole wall can flash more than three times a\n"
        "            second, which can set off seizures in some people\n"
        "\n"
        "The display is looked for if a display server answers. A server that is missing or hangs\n"
        "is no finding, except with --display. With --no-display or --screen alone no display is\n"
        "looked for, as for a document that another machine will use.\n"
        "\n"
        "The schema of documents comes with this program (docs/mirror-config.schema.json); "
        "editors\n"
        "can use it as well. Nothing is sent and nothing captured. The exit status is the one "
        "that\n"
        "mirrorctl run would end with: 65, 68 or 69 for errors. With warnings and cautions alone\n"
        "it is 0, with --strict and a warning 65.\n\n" +
        exitStatusHelp());
    command->callback(
        [&chosen, options] { chosen = [options] { return checkDocument(*options); }; });
}

} // namespace mirrorctl
