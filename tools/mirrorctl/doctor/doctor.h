// The types and functions that the doctor's parts share.
#pragma once

#include "tools/config/configDocument.h"
#include "tools/mirrorctl/displays.h"
#include "tools/mirrorctl/exitStatus.h"
#include "tools/mirrorctl/waiting.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace mirrorctl {

enum class Verdict { Good, Unsure, Bad };

// The result of examining one thing.
struct Check {
    Verdict verdict = Verdict::Good;
    std::string subject; // "display 5", "127.0.0.1:60222"
    std::string finding; // without a full stop
    std::string remedy = {};
    ExitStatus status = ExitStatus::Done; // of the program if this check is bad
};

// Implemented in one file per system

// Whether this process may capture the screen, and what the system provides for it.
struct SystemChecks {
    std::vector<Check> checks;
    // Keeps a client connected, since an X server may reset when its last client leaves.
    std::shared_ptr<void> client;
};

SystemChecks examineSystem();

// Makes the socket report every error that the network returns for its datagrams.
void requestNetworkErrors(int fd, int family);

// A square of one colour in the top left corner of a display, above all windows.
struct ScreenMark {
    // The square's offset from the corner and its side, in pixels of the display.
    static constexpr int first = 8;
    static constexpr int side = 32;

    std::string reason;                 // why it was not drawn; empty when it was
    double shownAt = 0.0;               // wall clock, seconds
    std::shared_ptr<void> windows = {}; // shown as long as these live
};

// Draws a mark before returning, if possible. `colour` is 0xRRGGBB.
ScreenMark drawMark(const Display &display, std::uint32_t colour);

// On Linux, for each kind of session. Each tells which was chosen and why, as in ", since DISPLAY".
SystemChecks examineX11(const std::string &why);
SystemChecks examineWayland(const std::string &why);
ScreenMark drawMarkX11(const Display &display, std::uint32_t colour);
ScreenMark drawMarkWayland(const Display &display, std::uint32_t colour);

// captureProbe.cpp, deviceProbe.cpp

// Whether pictures of the display arrive, and how old they are: mirrors it briefly to this process
// itself. Black proves nothing, since a screen may be black and the library sends black until it
// has received a frame; so a mark is drawn in a corner of the screen, if that is allowed and
// possible, and must appear in a picture. Ends early when a signal comes. Calls the library; no
// other thread may call it meanwhile.
Check probeCapture(const Display &display, bool mayMark, const StopSignals &signals);

// Whether the devices can be reached, as far as this machine can tell. Sends each a datagram
// without panels, which changes nothing, and waits for network errors for as long as networks take
// to detect an unused address: 3.5 s, or 0.2 s if all addresses are loopback. Lights do not reply,
// so the best result is that no error comes. One check per device, in their order.
std::vector<Check> probeDevices(const std::vector<config::DeviceEntry> &devices);

} // namespace mirrorctl
