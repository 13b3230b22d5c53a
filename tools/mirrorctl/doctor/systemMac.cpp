#include "tools/mirrorctl/doctor/system.h"

#include <CoreGraphics/CoreGraphics.h>

namespace mirrorctl {

struct System::Server {};

System::System() = default;
System::~System() = default;

std::vector<Check> System::examine() const {
    if (CGPreflightScreenCaptureAccess())
        return {{Verdict::good, "screen recording", "permitted"}};
    return {{Verdict::bad, "screen recording",
             "not permitted for this program, or for the terminal that it was started from",
             "System Settings, Privacy & Security, Screen Recording: switch it on for the terminal "
             "or program, quit that and start it again; if it is on already, take it off the list "
             "and add it anew, since a grant can outlive the program that it was given to",
             ExitStatus::captureRefused}};
}

// Connected sockets are told of everything as they are.
void askForNetworkErrors(int, int) {}

struct ScreenMark::Windows {};

ScreenMark::ScreenMark(std::uint32_t, std::uint32_t, std::uint32_t)
    : why("this program draws no marks on this system") {}

ScreenMark::~ScreenMark() = default;

} // namespace mirrorctl
