#include "tools/mirrorctl/doctor/doctor.h"

#include <CoreGraphics/CoreGraphics.h>

namespace mirrorctl {

SystemChecks examineSystem() {
    if (CGPreflightScreenCaptureAccess())
        return {{{Verdict::Good, "screen recording", "permitted"}}, nullptr};
    return {
        {{Verdict::Bad, "screen recording",
          "not permitted for this program, or for the terminal that it was started from",
          "System Settings, Privacy & Security, Screen Recording: switch it on for the terminal "
          "or program, quit that and start it again; if it is on already, take it off the list "
          "and add it again, since a grant can outlive the program that it was given to",
          ExitStatus::CaptureRefused}},
        nullptr};
}

// Connected sockets report them all by themselves.
void requestNetworkErrors(int, int) {}

struct ScreenMark::Windows {};

ScreenMark::ScreenMark(std::uint32_t, std::uint32_t, std::uint32_t)
    : why("this program draws no marks on this system") {}

ScreenMark::~ScreenMark() = default;

} // namespace mirrorctl
