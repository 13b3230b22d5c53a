// mirrorctl doctor
#include "tools/config/configDocument.h"
#include "tools/config/textFile.h"
#include "tools/mirrorctl/commands.h"
#include "tools/mirrorctl/displayList.h"
#include "tools/mirrorctl/doctor/captureTrial.h"
#include "tools/mirrorctl/doctor/diagnosis.h"
#include "tools/mirrorctl/doctor/reach.h"
#include "tools/mirrorctl/doctor/system.h"
#include "tools/mirrorctl/libraryCall.h"
#include "tools/mirrorctl/libraryTalk.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>

namespace mirrorctl {

struct DoctorOptions {
    std::string path;
    bool unmarked = false;
    bool json = false;
};

static bool hasPicture(const Display &display) {
    return display.width != 0 && display.height != 0;
}

static bool isMeantBy(const Display &display, const config::Document &document) {
    return display.displayID == static_cast<std::uint32_t>(document.displayID);
}

// What is bad of the system explains what is bad afterwards better than any guess.
static std::string remedyAfter(const Ward &system, const std::string &guess) {
    const auto isBad = [](const Check &check) { return check.verdict == Verdict::bad; };
    return std::any_of(system.checks.begin(), system.checks.end(), isBad)
               ? "first fix what is bad under System"
               : guess;
}

// A display without a picture is bad unless the document, if there is one, means another.
static std::vector<Display> listed(const std::optional<config::Reading> &reading,
                                   const Ward &system, Ward &ward) {
    const LibraryTalk talk;
    const DisplayList list = listDisplays();
    const auto &displays = list.displays;
    if (displays.empty()) {
        ward.checks.push_back(
            {Verdict::bad, "displays", "there is none to mirror",
             remedyAfter(system, "on X11 has the server a monitor? On macOS is a user logged in at "
                                 "the screen?"),
             ExitStatus::displayMissing});
        return displays;
    }
    for (const auto &display : displays) {
        Check check{Verdict::good, "display " + std::to_string(display.displayID),
                    describeSize(display)};
        if (!hasPicture(display)) {
            const bool isMeant = !reading || isMeantBy(display, reading->document);
            check.verdict = isMeant ? Verdict::bad : Verdict::unsure;
            check.status = ExitStatus::captureRefused;
            check.remedy =
                remedyAfter(system, "is it switched on, and may this program record the screen?");
        }
        ward.checks.push_back(check);
    }
    if (list.isCut())
        ward.checks.push_back({Verdict::unsure, "displays",
                               "the library lists only " + describeCut(list) + " that there are",
                               "switch off those that need not be mirrored"});
    return displays;
}

static std::optional<config::Reading> examineDocument(const std::string &path, Ward &ward) {
    const std::string name = path == "-" ? "standard input" : path;
    std::string reason;
    const auto text = config::readTextFile(path, reason);
    if (!text) {
        ward.checks.push_back({Verdict::bad, name, "cannot be read: " + reason,
                               "is it the right path, and may you read it?",
                               ExitStatus::fileUnreadable});
        return std::nullopt;
    }
    config::Reading reading = config::readText(*text);
    if (reading.problems.empty()) {
        ward.checks.push_back({Verdict::good, name, "the library can read it"});
        return reading;
    }
    const std::size_t count = reading.problems.size();
    ward.checks.push_back(
        {Verdict::bad, name,
         std::to_string(count) + (count == 1 ? " error" : " errors") +
             ", the first: " + config::describe("", reading.problems[0]).substr(2),
         "mirrorctl check " + name + " tells them all, and how to fix them",
         ExitStatus::documentFaulty});
    return std::nullopt;
}

// Those that the document means, or all.
static std::vector<Display> chosen(const std::vector<Display> &displays,
                                   const std::optional<config::Reading> &reading, Ward &ward) {
    if (!reading)
        return displays;
    for (const Display &display : displays)
        if (isMeantBy(display, reading->document))
            return {display};
    const auto wanted = static_cast<std::uint32_t>(reading->document.displayID);
    ward.checks.push_back({Verdict::bad, "display " + std::to_string(wanted),
                           "the configuration names it, but it is not there",
                           "name one that is; no other is ever taken in its place",
                           ExitStatus::displayMissing});
    return {};
}

static ExitStatus examineRest(const DoctorOptions &options, const Ward &document,
                              const std::optional<config::Reading> &reading,
                              const StopSignals &signals) {
    const System thisSystem;
    const Ward system{"System", thisSystem.examine()};
    Ward displays{"Displays", {}};
    Ward capture{"Capture", {}};
    Ward devices{"Devices", {}};
    const auto there = listed(reading, system, displays);
    bool interrupted = false;
    for (const Display &display : chosen(there, reading, capture)) {
        if (interrupted || !hasPicture(display))
            continue;
        Check check = tryCapture(display, !options.unmarked, signals, interrupted);
        if (check.status == ExitStatus::captureRefused)
            check.remedy = remedyAfter(system, check.remedy);
        capture.checks.push_back(std::move(check));
    }
    if (reading && !interrupted)
        devices.checks = tryDevices(reading->document.devices);
    const std::vector<Ward> wards = {system, displays, capture, document, devices};
    if (options.json)
        puts(jsonText(wards).c_str());
    else
        print(wards);
    return interrupted ? ExitStatus::nothingSent : statusOf(wards);
}

static ExitStatus examine(const DoctorOptions &options) {
    Ward document{"Configuration", {}};
    std::optional<config::Reading> reading;
    if (!options.path.empty())
        reading = examineDocument(options.path, document);
    const StopSignals signals;
    return untilSignal(signals, "Not examined to the end",
                       [&] { return examineRest(options, document, reading, signals); });
}

void addDoctorCommand(CLI::App &program, Action &chosenAction) {
    auto *command = program.add_subcommand(
        "doctor", "Find out why nothing is mirrored, or whether it would be");
    const auto options = std::make_shared<DoctorOptions>();
    command
        ->add_option("CONFIG", options->path,
                     "A document whose display and devices are to be tried; - reads standard "
                     "input")
        ->type_name("");
    command->add_flag("--no-mark", options->unmarked, "Draw nothing on the screen");
    command->add_flag("--json", options->json, "Print for scripts");
    command->footer(
        "Looks at the system (on X11 the server, its extensions and the kind of session; on macOS\n"
        "whether screen recording is permitted), lists the displays, and tries to capture each,\n"
        "or the document's: mirrors it for a moment onto this program itself.\n"
        "\n"
        "A BLACK PICTURE IS NO ANSWER, since a screen may be black, and a screen that is not seen\n"
        "looks the same. So a mark is drawn: a square of 32 pixels in the top left corner of the\n"
        "screen, in two colours one after the other, each for a fraction of a second. Both must\n"
        "come out, and how long that takes is how old pictures are. --no-mark leaves it out, and\n"
        "then says what cannot be told.\n"
        "\n"
        "Devices are sent one datagram about no panel, which changes nothing. Lights do not\n"
        "answer; what can be told is whether there is a way to them, and whether anybody objects:\n"
        "nobody with this address, nobody listening, no way, not allowed. That takes 3.5 seconds.\n"
        "\n"
        "The exit status is that of the first thing that is bad, 0 if nothing is.\n\n" +
        exitStatusHelp());
    command->callback(
        [&chosenAction, options] { chosenAction = [options] { return examine(*options); }; });
}

} // namespace mirrorctl
