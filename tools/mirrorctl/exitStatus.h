// What mirrorctl tells the program that started it.
#pragma once

#include <string>

namespace mirrorctl {

// The numbers are those of <sysexits.h>. They lie above all signal numbers, since the library ends
// the process with the number of a signal that it handles.
enum class ExitStatus {
    done = 0,
    usage = 64,
    documentFaulty = 65,
    fileUnreadable = 66,
    addressFaulty = 68,
    displayMissing = 69,
    failed = 70,
    startFailed = 71,
    serverGone = 74,
    nothingSent = 75,
    captureRefused = 77,
};

// The table of exit statuses for the help text.
std::string exitStatusHelp();

} // namespace mirrorctl
