// mirrorctl doctor
#include "tools/lights/json.h"
#include "tools/lights/text.h"
#include "tools/mirrorctl/commands.h"
#include "tools/mirrorctl/doctor/doctor.h"
#include "tools/mirrorctl/libraryCall.h"
#include "tools/mirrorctl/libraryMessages.h"

#include <cstdio>

namespace mirrorctl {

using lights::put;

struct DoctorOptions {
    std::string path;
    bool unmarked = false;
    bool json = false;
};

// A heading and the checks under it.
struct Section {
    std::string name;
    std::vector<Check> checks = {};
};

// The status of the first bad check; Done when there is none.
static ExitStatus statusOf(const std::vector<Section> &sections) {
    for (const Section &section : sections)
        for (const Check &check : section.checks)
            if (check.verdict == Verdict::Bad)
                return check.status;
    return ExitStatus::Done;
}

// A bad system check explains later bad checks better than any guess.
static std::string remedyAfter(const Section &system, const std::string &guess) {
    const bool isBad = statusOf({system}) != ExitStatus::Done;
    return isBad ? "first fix what is bad under System" : guess;
}

// Adds the available displays to `displays`. A display without a picture is bad unless a document
// names another one. Returns the display that the document names, or all without a document.
static std::vector<Display> examineDisplays(const std::optional<config::Document> &document,
                                            const Section &system, Section &displays) {
    const OutputRedirection toStandardError(STDERR_FILENO);
    const DisplayList list = listDisplays();
    if (list.displays.empty())
        displays.checks.push_back(
            {Verdict::Bad, "displays", "there is none to mirror",
             remedyAfter(system, "is a monitor connected? On macOS is a user logged in at it?"),
             ExitStatus::DisplayMissing});
    std::vector<Display> wanted;
    for (const Display &display : list.displays) {
        const bool isWanted = !document || display.is(document->displayID);
        if (isWanted)
            wanted.push_back(display);
        Check check{Verdict::Good, "display " + std::to_string(display.displayID),
                    describeSize(display)};
        if (!display.hasPicture()) {
            check.verdict = isWanted ? Verdict::Bad : Verdict::Unsure;
            check.status = ExitStatus::CaptureRefused;
            check.remedy =
                remedyAfter(system, "is it switched on, and may this program record the screen?");
        }
        displays.checks.push_back(check);
    }
    if (list.isCut())
        displays.checks.push_back(
            {Verdict::Unsure, "displays",
             "the library lists only " + describeCut(list) + " that there are",
             "switch off those that need not be mirrored"});
    return wanted;
}

static std::optional<config::Document> examineDocument(const std::string &path, Section &section) {
    const std::string name = path == "-" ? "standard input" : path;
    std::string reason;
    auto text = config::readTextFile(path, reason);
    if (!text) {
        section.checks.push_back({Verdict::Bad, name, "cannot be read: " + reason,
                                  "is it the right path, and may you read it?",
                                  ExitStatus::FileUnreadable});
        return std::nullopt;
    }
    config::Reading reading = config::readText(std::move(*text));
    if (reading.problems.empty()) {
        section.checks.push_back({Verdict::Good, name, "the library can read it"});
        return reading.document;
    }
    const std::size_t count = reading.problems.size();
    section.checks.push_back(
        {Verdict::Bad, name,
         lights::counted(count, "error") +
             ", the first: " + config::describe("", reading.problems[0]).substr(2),
         "run mirrorctl check " + name + " for all of them, and how to fix them",
         ExitStatus::DocumentFaulty});
    return std::nullopt;
}

static const char *nameOf(Verdict verdict) {
    static constexpr const char *names[] = {"good", "unsure", "bad"};
    return names[static_cast<int>(verdict)];
}

static std::string sentence(const std::string &text) {
    const bool isClosed = text.ends_with('.') || text.ends_with('?') || text.ends_with('!');
    return isClosed ? text : text + ".";
}

// For human readers, on standard output.
static void print(const std::vector<Section> &sections) {
    std::size_t counts[3] = {};
    for (const Section &section : sections) {
        if (!section.checks.empty())
            std::printf("%s\n", section.name.c_str());
        for (const Check &check : section.checks) {
            ++counts[static_cast<int>(check.verdict)];
            std::printf("  %-6s  %s: %s\n", nameOf(check.verdict), check.subject.c_str(),
                        sentence(check.finding).c_str());
            if (!check.remedy.empty())
                std::printf("          To fix it: %s\n", sentence(check.remedy).c_str());
        }
    }
    std::printf("%zu good, %zu unsure, %zu bad.\n", counts[0], counts[1], counts[2]);
}

// For scripts: one object on one line.
static std::string jsonText(const std::vector<Section> &sections) {
    rapidjson::StringBuffer buffer;
    lights::Json json(buffer);
    json.StartObject();
    put(json, "healthy", statusOf(sections) == ExitStatus::Done);
    json.Key("checks");
    json.StartArray();
    for (const Section &section : sections)
        for (const Check &check : section.checks) {
            json.StartObject();
            put(json, "ward", section.name);
            put(json, "verdict", nameOf(check.verdict));
            put(json, "subject", check.subject);
            put(json, "words", check.finding);
            put(json, "remedy", check.remedy);
            json.EndObject();
        }
    json.EndArray();
    json.EndObject();
    return buffer.GetString();
}

static ExitStatus examineRest(const DoctorOptions &options, const Section &configuration,
                              const std::optional<config::Document> &document,
                              const StopSignals &signals) {
    const SystemChecks systemChecks = examineSystem();
    const Section system{"System", systemChecks.checks};
    Section displays{"Displays"};
    Section capture{"Capture"};
    Section devices{"Devices"};
    const auto wanted = examineDisplays(document, system, displays);
    if (document && wanted.empty())
        capture.checks.push_back(
            {Verdict::Bad,
             "display " + std::to_string(static_cast<std::uint32_t>(document->displayID)),
             "the configuration names it, but it is not there",
             "name one that is; no other is ever taken in its place", ExitStatus::DisplayMissing});
    for (const Display &display : wanted) {
        if (signals.firstSignal() != 0 || !display.hasPicture())
            continue;
        Check check = probeCapture(display, !options.unmarked, signals);
        if (check.status == ExitStatus::CaptureRefused)
            check.remedy = remedyAfter(system, check.remedy);
        capture.checks.push_back(std::move(check));
    }
    const bool isInterrupted = signals.firstSignal() != 0;
    if (document && !isInterrupted)
        devices.checks = probeDevices(document->devices);
    const std::vector<Section> sections = {system, displays, capture, configuration, devices};
    if (options.json)
        std::puts(jsonText(sections).c_str());
    else
        print(sections);
    return isInterrupted ? ExitStatus::NothingSent : statusOf(sections);
}

static ExitStatus examine(const DoctorOptions &options) {
    Section configuration{"Configuration"};
    std::optional<config::Document> document;
    if (!options.path.empty())
        document = examineDocument(options.path, configuration);
    const StopSignals signals;
    return untilSignal(signals, "Not examined to the end",
                       [&] { return examineRest(options, configuration, document, signals); });
}

void addDoctorCommand(CLI::App &program, ExitStatus &status) {
    auto *command = program.add_subcommand(
        "doctor", "Find out why nothing is mirrored, or whether it would be");
    const auto options = std::make_shared<DoctorOptions>();
    addConfig(*command, options->path,
              "A document whose display and devices are to be tried; - reads standard input")
        ->required(false);
    command->add_flag("--no-mark", options->unmarked, "Draw nothing on the screen");
    command->add_flag("--json", options->json, "Print for scripts");
    command->footer(
        "Looks at the system (on Linux the kind of session, and the display server and what it\n"
        "offers; on macOS whether screen recording is permitted), lists the displays, and tries "
        "to\n"
        "capture each, or the document's: mirrors it for a moment onto this program itself.\n"
        "\n"
        "A BLACK PICTURE PROVES NOTHING: the screen may be black, or the program may not see it.\n"
        "So the doctor draws a mark: a square of 32 pixels in the top left corner of the screen,\n"
        "in two colours one after the other, each for a fraction of a second. Both colours must\n"
        "appear in the captured picture; the time until they do is the picture's delay. With\n"
        "--no-mark the doctor draws nothing, and says what it could not find out.\n"
        "\n"
        "Devices are sent one datagram about no panel, which changes nothing. Lights do not\n"
        "answer; what can be found out is whether there is a route to them, and whether the\n"
        "network reports an error: nobody with this address, nobody listening, no route, not\n"
        "allowed. That takes 3.5 seconds.\n"
        "\n"
        "The exit status is that of the first thing that is bad, 0 if nothing is.\n\n");
    onCommand(*command, status, options, examine);
}

} // namespace mirrorctl
