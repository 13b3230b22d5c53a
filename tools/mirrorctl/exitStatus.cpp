#include "tools/mirrorctl/exitStatus.h"

namespace mirrorctl {

std::string exitStatusHelp() {
    static const struct {
        ExitStatus status;
        const char *meaning;
    } rows[] = {
        {ExitStatus::done, "done; for run also after Ctrl-C, which is how a run is meant to end"},
        {ExitStatus::usage, "the command line is wrong"},
        {ExitStatus::documentFaulty, "the configuration document has faults"},
        {ExitStatus::fileUnreadable, "the configuration file is missing or cannot be read"},
        {ExitStatus::addressFaulty,
         "a device's address is not that of a light, or (doctor) cannot be reached"},
        {ExitStatus::displayMissing,
         "there is no such display, or none at all, or the display server does not answer"},
        {ExitStatus::failed, "anything else went wrong"},
        {ExitStatus::startFailed, "mirroring could not be started, or ended by itself"},
        {ExitStatus::serverGone, "run --once: the display server went away"},
        {ExitStatus::nothingSent,
         "there is nothing to show: nothing was sent in time, no frame came, or Ctrl-C came first\n"
         "      (for run: before anything was mirrored)"},
        {ExitStatus::captureRefused, "the display may not be captured"},
    };
    std::string text = "Exit status:\n";
    for (const auto &row : rows) {
        const std::string number = std::to_string(static_cast<int>(row.status));
        text += std::string(6 - number.size(), ' ') + number + "  " + row.meaning + "\n";
    }
    return text;
}

} // namespace mirrorctl
