#include "tools/mirrorctl/mirroring.h"

#include "mirror/mirrorInterface.h"
#include "tools/config/modes.h"
#include "tools/lights/address.h"
#include "tools/mirrorctl/libraryCall.h"
#include "tools/mirrorctl/libraryMessages.h"
#include "tools/mirrorctl/server.h"

#include <cstdio>
#include <rapidjson/document.h>
#include <stdexcept>

namespace mirrorctl {

std::vector<config::Problem> modeProblems(const config::Document &document) {
    if (config::modeName(document.mode))
        return {};
    return {{"/mode",
             "expected 0 (match), 1 (melt), 2 (fade) or 3 (palette), found " +
                 std::to_string(document.mode) + "; a run in any other mode ends at once",
             "choose one of these four"}};
}

std::vector<config::Problem> addressProblems(const config::Document &document) {
    std::vector<config::Problem> problems;
    for (std::size_t i = 0; i < document.devices.size(); ++i)
        if (const auto error = lights::findAddressError(document.devices[i].ip))
            problems.push_back(
                {"/devices/" + std::to_string(i) + "/ip", error->message, error->fix});
    return problems;
}

std::vector<config::Problem> displayProblems(const config::Document &document,
                                             const DisplayList &list) {
    std::string there;
    for (const Display &display : list.displays) {
        if (display.is(document.displayID))
            return {};
        there += there.empty() ? "" : ", ";
        there += std::to_string(display.displayID) + " (" + describeSize(display) + ")";
    }
    const std::string found = "; found " + std::to_string(document.displayID);
    if (list.displays.empty())
        return {{"/displayID", "expected a display, but there is none at all" + found,
                 "run mirrorctl doctor to find out why"}};
    if (list.isCut())
        return {{"/displayID",
                 "expected one of the displays that the library lists: " + there + found +
                     ", which may be there all the same, since the library lists only " +
                     describeCut(list),
                 "choose one that is listed, or switch others off until this one is"}};
    return {{"/displayID", "expected one of the displays there are: " + there + found,
             "choose one of them; no other is ever taken in its place"}};
}

static void print(const std::string &path, const std::vector<config::Problem> &problems) {
    const std::string name = path == "-" ? "standard input" : path;
    for (const auto &problem : problems) {
        std::fprintf(stderr, "%s\n", config::describe(name, problem).c_str());
        if (!problem.fix.empty())
            std::fprintf(stderr, "    To fix it: %s.\n", problem.fix.c_str());
    }
}

ExitStatus load(const std::string &path, std::optional<std::int32_t> mode,
                config::Reading &reading) {
    std::string reason;
    auto text = config::readTextFile(path, reason);
    if (!text) {
        print(path, {{"", "cannot be read: " + reason, ""}});
        return ExitStatus::FileUnreadable;
    }
    reading = config::readText(std::move(*text));
    if (mode)
        reading.document.mode = *mode;
    if (reading.problems.empty()) {
        reading.problems = modeProblems(reading.document);
        config::locate(reading, reading.problems);
    }
    print(path, reading.problems);
    return reading.problems.empty() ? ExitStatus::Done : ExitStatus::DocumentFaulty;
}

ExitStatus checkRequirements(const std::string &path, const config::Reading &reading,
                             bool usesLights) {
    std::vector<config::Problem> addresses;
    if (usesLights)
        addresses = addressProblems(reading.document);
    config::locate(reading, addresses);
    print(path, addresses);
    const auto status = addresses.empty() ? ExitStatus::Done : ExitStatus::AddressFaulty;

    const DisplayList list = listDisplays();
    auto displays = displayProblems(reading.document, list);
    if (displays.empty())
        return status;
    if (!list.displays.empty() || !reportSilentServer()) {
        config::locate(reading, displays);
        print(path, displays);
        if (list.displays.empty())
            std::fputs(noDisplayHint().c_str(), stderr);
    }
    return status == ExitStatus::Done ? ExitStatus::DisplayMissing : status;
}

ExitStatus apply(std::string text, std::int32_t displayID) {
    if (setMirrorConfig(text.data()) == 1)
        return ExitStatus::Done;
    if (reportSilentServer())
        return ExitStatus::DisplayMissing;
    std::fprintf(
        stderr,
        "Capturing display %u was refused.\n"
        "  On macOS: allow screen recording for this program (or its terminal) in the privacy\n"
        "  settings, and start it again.\n"
        "  On Linux: the display went away, the session grants no capture, or memory ran out;\n"
        "  mirrorctl doctor says more.\n",
        static_cast<std::uint32_t>(displayID));
    return ExitStatus::CaptureRefused;
}

ExitStatus start(std::size_t deviceCount) {
    if (startMirror() == 1)
        return ExitStatus::Done;
    std::fprintf(stderr, "Mirroring could not be started%s.\n",
                 deviceCount == 0 ? ": the document has no devices" : "");
    return ExitStatus::StartFailed;
}

ExitStatus stop() {
    if (stopMirror() == 1)
        return ExitStatus::Done;
    std::fputs("Mirroring could not be stopped properly.\n", stderr);
    return ExitStatus::Failed;
}

// A document that mirrors the display and sends nothing. A run requires a device; this one has no
// panels, and palette mode sends to a device only when one of its panels is due. Palette mode also
// runs its cycles, and answers captures, whatever the screen shows.
static config::Document withoutLights(std::int32_t displayID) {
    return {displayID, config::paletteMode, {{"127.0.0.1", 2, 0, 1.0, {}}}};
}

ExitStatus mirrorBriefly(const std::string &path, bool usesLights, const char *nothing,
                         config::Reading &reading, const BriefWork &work) {
    if (const auto status = load(path, std::nullopt, reading); status != ExitStatus::Done)
        return status;
    const config::Document &document = reading.document;
    // Constructed after the document has been read: Ctrl-C must end a wait for standard input.
    const StopSignals signals;
    return untilSignal(signals, nothing, [&] {
        const OutputRedirection toStandardError(STDERR_FILENO);
        auto status = checkRequirements(path, reading, usesLights);
        if (status == ExitStatus::Done)
            status = apply(usesLights ? reading.text
                                      : config::documentText(withoutLights(document.displayID)),
                           document.displayID);
        if (status == ExitStatus::Done)
            status = start(usesLights ? document.devices.size() : 1);
        if (status != ExitStatus::Done)
            return status;
        const auto result = work(signals);
        const auto stopped = stop();
        return result == ExitStatus::Done ? stopped : result;
    });
}

static const char notUnderstood[] = "the library's palette is not understood";

static std::uint8_t channel(const rapidjson::Value &colour, const char *name) {
    if (!colour.IsObject() || !colour.HasMember(name) || !colour[name].IsUint() ||
        colour[name].GetUint() > 255)
        throw std::runtime_error(notUnderstood);
    return static_cast<std::uint8_t>(colour[name].GetUint());
}

Palette fetchPalette() {
    char buffer[512 + 1] = {}; // the last byte stays zero
    if (getPalette(buffer) != 0)
        throw std::runtime_error("the library could not make a palette");
    Palette palette;
    palette.text = buffer;
    rapidjson::Document tree;
    tree.Parse(buffer);
    if (tree.HasParseError() || !tree.IsObject() || !tree.HasMember("palette") ||
        !tree["palette"].IsArray())
        throw std::runtime_error(notUnderstood);
    for (const auto &colour : tree["palette"].GetArray())
        palette.colours.push_back(
            {channel(colour, "R"), channel(colour, "G"), channel(colour, "B")});
    return palette;
}

} // namespace mirrorctl
