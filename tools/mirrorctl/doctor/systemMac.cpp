#include "tools/mirrorctl/doctor/doctor.h"

#include <CoreGraphics/CGWindow.h>
#include <dlfcn.h>

namespace mirrorctl {

static Check checkPermission() {
    if (CGPreflightScreenCaptureAccess())
        return {Verdict::Good, "screen recording", "permitted"};
    return {Verdict::Bad, "screen recording",
            "not permitted for this program, or for the terminal that it was started from",
            "System Settings, Privacy & Security, Screen Recording: switch it on for the terminal "
            "or program, quit that and start it again; if it is on already, take it off the list "
            "and add it again, since a grant can outlive the program that it was given to",
            ExitStatus::CaptureRefused};
}

// The source of the library's frames; the library loads without them.
static Check checkDisplayStreams() {
    if (dlsym(RTLD_DEFAULT, "CGDisplayStreamCreateWithDispatchQueue"))
        return {Verdict::Good, "display streams", "this macOS has them"};
    return {Verdict::Bad, "display streams",
            "this macOS has them no longer, and the library has no other way to the screen",
            "mirror from a Mac whose macOS has them", ExitStatus::CaptureRefused};
}

SystemChecks examineSystem() {
    return {{checkPermission(), checkDisplayStreams()}, nullptr};
}

// Connected sockets report these errors by default.
void requestNetworkErrors(int, int) {}

ScreenMark drawMark(const Display &, std::uint32_t) {
    return {"this program draws no marks on this system"};
}

} // namespace mirrorctl
