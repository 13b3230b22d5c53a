// mirrorctl check
#include "tools/lights/json.h"
#include "tools/lights/text.h"
#include "tools/mirrorctl/commands.h"
#include "tools/mirrorctl/libraryMessages.h"
#include "tools/mirrorctl/mirroring.h"
#include "tools/mirrorctl/server.h"

#include <algorithm>
#include <cstdio>
#include <exception>

namespace mirrorctl {

using config::Severity;
using lights::put;

struct CheckOptions {
    std::string path;
    std::optional<config::ScreenSize> screen;
    bool needsDisplay = false;
    bool ignoresDisplays = false;
    bool strict = false;
    bool json = false;

    bool looksForDisplay() const { return needsDisplay || (!ignoresDisplays && !screen); }
};

struct CheckReport {
    std::vector<config::Problem> problems;
    std::string remark;                       // one line on unchecked parts, or empty
    std::optional<config::ScreenSize> screen; // used to check the panels' places

    std::size_t count(Severity severity) const {
        return static_cast<std::size_t>(
            std::count_if(problems.begin(), problems.end(),
                          [&](const auto &problem) { return problem.severity == severity; }));
    }
};

// Looks for the document's display and puts its size, or why it is unknown, into the report.
// Returns the problems, without places. That there are no displays, or that the server hangs, is a
// problem only if the display is needed.
static std::vector<config::Problem> findDisplay(const config::Document &document, bool isNeeded,
                                                CheckReport &report) {
    // Stays connected while the library asks: a server may reset when its last client leaves.
    const ServerWatch watch;
    constexpr double patience = 3.0; // seconds; so that a busy server does not count as hung
    if (watch.isSilentFor(patience)) {
        const std::string reason = serverName() + " does not answer";
        if (isNeeded)
            return {{"/displayID", "cannot be checked, because " + reason,
                     "is it stopped or overloaded? mirrorctl doctor says more"}};
        report.remark = "The displays are not known, because " + reason + ".";
        return {};
    }
    DisplayList list;
    try {
        const OutputRedirection toStandardError(STDERR_FILENO);
        list = listDisplays();
    } catch (const std::exception &error) {
        if (isNeeded)
            throw;
        report.remark = "The displays are not known: " + std::string(error.what()) + ".";
        return {};
    }
    if (list.displays.empty() && !isNeeded) {
        report.remark = "There is no display here to look at.";
        return {};
    }
    for (const Display &display : list.displays)
        if (display.is(document.displayID) && display.hasPicture())
            report.screen = config::ScreenSize{display.width, display.height};
        else if (display.is(document.displayID))
            report.remark = "The display gives no picture, so its size is not known.";
    return displayProblems(document, list);
}

// Returns the exit status that a run would have; a run makes the same checks in the same order.
static ExitStatus review(const CheckOptions &options, std::string text, CheckReport &report) {
    config::Reading reading = config::readText(std::move(text));
    const config::FaultyParts faulty(reading.problems);
    std::vector<config::Problem> displayProblems;
    if (options.looksForDisplay() && !faulty.include("/displayID"))
        displayProblems = findDisplay(reading.document, options.needsDisplay, report);
    if (options.screen)
        report.screen = options.screen;
    if (!report.screen && !faulty.include("/devices"))
        report.remark += std::string(report.remark.empty() ? "" : " ") +
                         "The panels' places were not checked; --screen names the display's size.";

    auto status = reading.problems.empty() ? ExitStatus::Done : ExitStatus::DocumentFaulty;
    std::vector<config::Problem> unmet; // requirements of a run
    const auto require = [&](std::vector<config::Problem> problems, ExitStatus failure) {
        std::erase_if(problems,
                      [&](const auto &problem) { return faulty.include(problem.pointer); });
        if (status == ExitStatus::Done && !problems.empty())
            status = failure;
        std::move(problems.begin(), problems.end(), std::back_inserter(unmet));
    };
    require(modeProblems(reading.document), ExitStatus::DocumentFaulty);
    require(addressProblems(reading.document), ExitStatus::AddressFaulty);
    require(std::move(displayProblems), ExitStatus::DisplayMissing);
    config::locate(reading, unmet); // empty if the text does not parse
    report.problems = config::review(std::move(reading), report.screen).problems;
    std::move(unmet.begin(), unmet.end(), std::back_inserter(report.problems));
    std::stable_sort(report.problems.begin(), report.problems.end(),
                     [](const auto &a, const auto &b) {
                         return std::pair(a.place.line, a.place.column) <
                                std::pair(b.place.line, b.place.column);
                     });
    return status;
}

static const char *severityName(Severity severity) {
    if (severity == Severity::Caution)
        return "caution";
    return severity == Severity::Error ? "error" : "warning";
}

static void print(const std::string &name, const config::Problem &problem) {
    std::printf("%s:%zu:%zu: %s: ", name.c_str(), problem.place.line, problem.place.column,
                severityName(problem.severity));
    if (!problem.pointer.empty())
        std::printf("%s: ", config::shownPointer(problem.pointer).c_str());
    std::printf("%s%s\n", problem.message.c_str(), problem.message.ends_with('.') ? "" : ".");
    if (!problem.fix.empty())
        std::printf("    %s: %s.\n",
                    problem.severity == Severity::Caution ? "What to do" : "To fix it",
                    problem.fix.c_str());
}

// For human readers, on standard output: "NAME:LINE:COLUMN: error: POINTER: MESSAGE" and a line on
// how to fix it for each error and warning, the verdict ("NAME: fine." if there are none), and then
// the cautions.
static void print(const std::string &name, const CheckReport &report) {
    for (const auto &problem : report.problems)
        if (problem.severity != Severity::Caution)
            print(name, problem);
    const std::size_t errors = report.count(Severity::Error);
    const std::size_t warnings = report.count(Severity::Warning);
    if (errors + warnings == 0)
        std::printf("%s: fine.\n", name.c_str());
    else
        std::printf("%s: %s, %s.\n", name.c_str(), lights::counted(errors, "error").c_str(),
                    lights::counted(warnings, "warning").c_str());
    if (!report.remark.empty())
        std::puts(report.remark.c_str());
    for (const auto &problem : report.problems)
        if (problem.severity == Severity::Caution)
            print(name, problem);
}

// For scripts: one object on one line.
static std::string jsonText(const std::string &name, const CheckReport &report) {
    rapidjson::StringBuffer buffer;
    lights::Json json(buffer);
    json.StartObject();
    put(json, "file", name);
    put(json, "valid", report.count(Severity::Error) == 0);
    put(json, "errors", report.count(Severity::Error));
    put(json, "warnings", report.count(Severity::Warning));
    put(json, "cautions", report.count(Severity::Caution));
    put(json, "screenKnown", report.screen.has_value());
    json.Key("problems");
    json.StartArray();
    for (const auto &problem : report.problems) {
        json.StartObject();
        put(json, "severity", severityName(problem.severity));
        put(json, "pointer", problem.pointer);
        put(json, "line", problem.place.line);
        put(json, "column", problem.place.column);
        put(json, "message", problem.message);
        put(json, "remedy", problem.fix);
        json.EndObject();
    }
    json.EndArray();
    json.EndObject();
    return buffer.GetString();
}

static ExitStatus checkDocument(const CheckOptions &options) {
    std::string reason;
    auto text = config::readTextFile(options.path, reason);
    const std::string name = options.path == "-" ? "standard input" : options.path;
    if (!text) {
        std::fprintf(stderr, "%s: cannot be read: %s\n", name.c_str(), reason.c_str());
        return ExitStatus::FileUnreadable;
    }
    CheckReport report;
    const ExitStatus status = review(options, std::move(*text), report);
    if (options.json)
        std::puts(jsonText(name, report).c_str());
    else
        print(name, report);
    const bool hasWarnings = report.count(Severity::Warning) > 0;
    return status == ExitStatus::Done && options.strict && hasWarnings ? ExitStatus::DocumentFaulty
                                                                       : status;
}

void addCheckCommand(CLI::App &program, ExitStatus &status) {
    auto *command =
        program.add_subcommand("check", "Report everything that is wrong with a configuration");
    const auto options = std::make_shared<CheckOptions>();
    addConfig(*command, options->path);
    addScreen(
        *command, options->screen,
        "The display's size in pixels, such as 1920x1080, instead of looking for the display");
    auto *display =
        command->add_flag("--display", options->needsDisplay, "Fail when there is no display");
    command->add_flag("--no-display", options->ignoresDisplays, "Do not look for a display")
        ->excludes(display);
    command->add_flag("--strict", options->strict, "Let warnings count as errors");
    command->add_flag("--json", options->json, "Print for scripts");
    command->footer(
        "Reports everything at once: for each problem the line and column, the JSON pointer, what\n"
        "was expected and found, and how to fix it. For a document without errors and warnings\n"
        "it prints that it is fine, and after that any cautions.\n"
        "\n"
        "  error     mirrorctl run refuses it: members missing or of the wrong type, a mode or a\n"
        "            display that does not exist, an address that no light can have\n"
        "  warning   accepted, but probably a mistake: panels off the screen, an address or an\n"
        "            identifier twice, members that the library does not read, values too large\n"
        "            for the datagrams\n"
        "  caution   good to know: in most modes the whole wall can flash more than three times a\n"
        "            second, which can cause seizures in some people\n"
        "\n"
        "check looks for the display if there are any. To have none, or a server that hangs, is\n"
        "no problem, except with --display. With --no-display, or with --screen but not\n"
        "--display, it does not look, as for a document that another machine will use.\n"
        "\n"
        "The schema of documents comes with this program (docs/mirror-config.schema.json);\n"
        "editors can use it as well. Nothing is sent and nothing captured. The exit status is\n"
        "the one that mirrorctl run would end with: 65, 68 or 69 for errors. With warnings and\n"
        "cautions alone it is 0, with --strict and a warning 65.\n\n");
    onCommand(*command, status, options, checkDocument);
}

} // namespace mirrorctl
