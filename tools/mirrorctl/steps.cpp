#include "tools/mirrorctl/steps.h"

#include "mirror/mirrorInterface.h"
#include "tools/config/places.h"
#include "tools/config/textFile.h"
#include "tools/mirrorctl/server.h"
#include "tools/mirrorctl/suitability.h"

#include <cstdio>

namespace mirrorctl {

static void print(const std::string &path, const std::vector<config::Problem> &problems) {
    const std::string name = path == "-" ? "standard input" : path;
    for (const auto &problem : problems) {
        fprintf(stderr, "%s\n", config::describe(name, problem).c_str());
        if (!problem.remedy.empty())
            fprintf(stderr, "    To fix it: %s.\n", problem.remedy.c_str());
    }
}

std::string withMode(const std::string &text, std::int32_t mode) {
    std::string changed = text;
    changed.insert(changed.find('{') + 1, "\"mode\": " + std::to_string(mode) + ", ");
    return changed;
}

ExitStatus load(const std::string &path, std::optional<std::int32_t> mode,
                config::Reading &reading) {
    std::string reason;
    const auto text = config::readTextFile(path, reason);
    if (!text) {
        print(path, {{"", "cannot be read: " + reason, ""}});
        return ExitStatus::fileUnreadable;
    }
    reading = config::readText(*text);
    if (mode)
        reading.document.mode = *mode;
    if (reading.problems.empty()) {
        reading.problems = modeProblems(reading.document);
        config::locate(reading.text, reading.problems);
    }
    print(path, reading.problems);
    return reading.problems.empty() ? ExitStatus::done : ExitStatus::documentFaulty;
}

ExitStatus checkDisplay(const std::string &path, const config::Reading &reading) {
    const auto list = listDisplays();
    if (list.displays.empty() && tellServerSilence())
        return ExitStatus::displayMissing;
    auto displays = displayProblems(reading.document, list);
    config::locate(reading.text, displays);
    print(path, displays);
    if (list.displays.empty())
        fputs(noDisplayAdvice().c_str(), stderr);
    return displays.empty() ? ExitStatus::done : ExitStatus::displayMissing;
}

ExitStatus checkSurroundings(const std::string &path, const config::Reading &reading) {
    auto addresses = addressProblems(reading.document);
    config::locate(reading.text, addresses);
    print(path, addresses);
    const auto display = checkDisplay(path, reading);
    return addresses.empty() ? display : ExitStatus::addressFaulty;
}

ExitStatus apply(std::string text, std::int32_t displayID) {
    if (setMirrorConfig(text.data()) == 1)
        return ExitStatus::done;
    if (tellServerSilence())
        return ExitStatus::displayMissing;
    fprintf(stderr,
            "Capturing display %u was refused.\n"
            "  On macOS: allow screen recording for this program (or its terminal) in the privacy\n"
            "  settings, and start it again.\n"
            "  On X11: the display went away, the server grants no capture, or memory ran out.\n",
            static_cast<std::uint32_t>(displayID));
    return ExitStatus::captureRefused;
}

ExitStatus start(std::size_t deviceCount) {
    if (startMirror() == 1)
        return ExitStatus::done;
    fprintf(stderr, "Mirroring could not be started%s.\n",
            deviceCount == 0 ? ": the document has no devices" : "");
    return ExitStatus::startFailed;
}

ExitStatus stop() {
    if (stopMirror() == 1)
        return ExitStatus::done;
    fputs("Mirroring could not be stopped in order.\n", stderr);
    return ExitStatus::failed;
}

} // namespace mirrorctl
