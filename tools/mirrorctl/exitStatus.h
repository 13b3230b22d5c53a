// The exit status of mirrorctl.
#pragma once

namespace mirrorctl {

// The numbers are those of <sysexits.h>. They lie above the numbers of the signals that the library
// handles, since it ends the process with the signal's number. main.cpp has their meanings.
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
