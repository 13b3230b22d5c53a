// What mirrorctl tells the program that started it.
#pragma once

namespace mirrorctl {

// The numbers are those of <sysexits.h>. They lie above all signal numbers, since the library ends
// the process with the number of a signal that it handles. main.cpp has their meanings.
enum class ExitStatus {
    Done = 0,
    Usage = 64,
    DocumentFaulty = 65,
    FileUnreadable = 66,
    AddressFaulty = 68,
    DisplayMissing = 69,
    Failed = 70,
    StartFailed = 71,
    ServerGone = 74,
    NothingSent = 75,
    CaptureRefused = 77,
};

} // namespace mirrorctl
