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
    bool strict = false;
    bool json = false;
};

// The displays that are there; none also when the library cannot tell.
static DisplayList displaysHere() {
    const LibraryTalk talk;
    try {
        return listDisplays();
    } catch (const std::exception &) {
        return {};
    }
}

// The size to compare with, and what to say if there is none or another.
struct Surroundings {
    std::optional<config::ScreenSize> screen;
    std::vector<config::Problem> problems;
    std::string remark;
};

static Surroundings lookAround(const CheckOptions &options, const std::string &text) {
    Surroundings around;
    if (!options.screen.empty()) {
        around.screen = parseSize(options.screen);
        return around;
    }
    const auto reading = config::readText(text);
    const config::Document &document = reading.document;
    const auto displays = displaysHere();
    const auto wanted = static_cast<std::uint32_t>(document.displayID);
    for (const Display &display : displays.displays)
        if (display.displayID == wanted && display.width > 0 && display.height > 0)
            around.screen = config::ScreenSize{display.width, display.height};
    if (config::Unsound(reading.problems).covers("/devices"))
        return around; // there are no panels to compare
    if (displays.displays.empty() && isServerSilent())
        around.remark = "There is no display to compare the panels' places with, since " +
                        serverName() + " does not answer; --screen names its size.";
    else if (displays.displays.empty())
        around.remark = "There is no display here to compare the panels' places with; --screen "
                        "names its size.";
    else if (!config::Unsound(reading.problems).covers("/displayID"))
        around.problems = displayProblems(document, displays);
    for (auto &problem : around.problems)
        problem.severity = config::Severity::warning;
    return around;
}

static void append(std::vector<config::Problem> &problems, std::vector<config::Problem> more) {
    problems.insert(problems.end(), std::make_move_iterator(more.begin()),
                    std::make_move_iterator(more.end()));
}

static Findings review(const CheckOptions &options, const std::string &text) {
    Surroundings around = lookAround(options, text);
    config::Reading reading = config::reviewText(text, around.screen);
    Findings findings;
    findings.remark = around.remark;
    const config::Unsound unsound(reading.problems);
    findings.onlyAddresses =
        std::none_of(reading.problems.begin(), reading.problems.end(), isError);
    // Places can be found only in what parses.
    if (!unsound.covers("/devices")) {
        auto addresses = addressProblems(reading.document);
        std::erase_if(addresses, [&](const auto &one) { return unsound.covers(one.pointer); });
        append(around.problems, addresses);
    }
    if (!around.problems.empty())
        config::locate(text, around.problems);
    append(reading.problems, around.problems);
    findings.problems = std::move(reading.problems);
    std::stable_sort(findings.problems.begin(), findings.problems.end(),
                     [](const auto &a, const auto &b) {
                         return std::pair(a.place.line, a.place.column) <
                                std::pair(b.place.line, b.place.column);
                     });
    return findings;
}

static ExitStatus checkDocument(const CheckOptions &options) {
    std::string reason;
    const auto text = config::readTextFile(options.path, reason);
    const std::string name = options.path == "-" ? "standard input" : options.path;
    if (!text) {
        fprintf(stderr, "%s: cannot be read: %s\n", name.c_str(), reason.c_str());
        return ExitStatus::fileUnreadable;
    }
    const Findings findings = review(options, *text);
    if (options.json)
        puts(jsonText(name, findings).c_str());
    else
        print(name, findings);
    if (count(findings, config::Severity::error) > 0)
        return findings.onlyAddresses ? ExitStatus::addressFaulty : ExitStatus::documentFaulty;
    const bool isFlawed = options.strict && count(findings, config::Severity::warning) > 0;
    return isFlawed ? ExitStatus::documentFaulty : ExitStatus::done;
}

void addCheckCommand(CLI::App &program, Action &chosen) {
    auto *command = program.add_subcommand("check", "Tell all that is wrong with a configuration");
    const auto options = std::make_shared<CheckOptions>();
    command->add_option("CONFIG", options->path, "The document; - reads standard input")
        ->required()
        ->type_name("");
    command
        ->add_option("--screen", options->screen,
                     "The size of the display in pixels, such as 1920x1080: instead of looking "
                     "for the display here")
        ->type_name("WxH")
        ->check(sizeArgument());
    command->add_flag("--strict", options->strict, "Let warnings count as faults");
    command->add_flag("--json", options->json, "Print for scripts");
    command->footer(
        "Tells everything at once: for each finding the line and column, the JSON pointer, what\n"
        "was expected and found, and how to mend it.\n"
        "\n"
        "  error     the library would stop its process, or a light would stay dark\n"
        "  warning   readable, but hardly meant: panels off the screen, an address or an\n"
        "            identifier twice, members that nobody reads, a mode or a display that does\n"
        "            not exist, values too large for the datagrams\n"
        "  caution   to be known: a mode in which the whole wall can flash more than three times\n"
        "            a second, which can set off seizures in some people\n"
        "\n"
        "The errors are those of the schema that comes with this program\n"
        "(mirror-config.schema.json), which editors can use as well, and addresses that are none.\n"
        "Nothing is sent and nothing captured. With warnings and cautions alone the exit status\n"
        "is 0, with --strict and a warning 65.\n\n" +
        exitStatusHelp());
    command->callback(
        [&chosen, options] { chosen = [options] { return checkDocument(*options); }; });
}

} // namespace mirrorctl
