// What the doctor's parts have in common, and what each of them does.
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

// The result for one thing that was examined.
struct Check {
    Verdict verdict = Verdict::Good;
    std::string subject; // "display 5", "127.0.0.1:60222"
    std::string finding; // without a full stop
    std::string remedy = {};
    ExitStatus status = ExitStatus::Done; // the program's, if it is bad
};

// Each system in a file of its own

// Whether this process may capture screens, and what the system has for it.
struct SystemChecks {
    std::vector<Check> checks;
    // An X server that resets when its last client leaves does not do so while this lives.
    std::shared_ptr<void> client;
};

SystemChecks examineSystem();

// Makes the socket report every error that the network returns for its datagrams.
void requestNetworkErrors(int fd, int family);

// A square of one colour in the top left corner of every display of one size, above all windows.
struct ScreenMark {
    // The square's edges, in pixels of the display.
    static constexpr int first = 8;
    static constexpr int side = 32;

    std::string reason;                 // why it was not drawn; empty when it was
    double shownAt = 0.0;               // wall clock, seconds
    std::shared_ptr<void> windows = {}; // it is shown for as long as these live
};

// Draws it before it returns, if it can be drawn. `colour` is 0xRRGGBB.
ScreenMark drawMark(std::uint32_t width, std::uint32_t height, std::uint32_t colour);

// captureTrial.cpp, deviceTrial.cpp

// Whether pictures of the display arrive, and how old they are: mirrors it for a moment onto this
// process itself. Black proves nothing, since a screen may be black and the library sends black
// until it has seen a frame; so a mark is drawn in a corner of the screen, if that is allowed and
// possible, and must come out. Ends early when a signal comes. Calls the library, and nobody else
// may do so meanwhile.
Check tryCapture(const Display &display, bool mayMark, const StopSignals &signals);

// Whether the devices can be reached, as far as this machine can tell. Sends each a datagram about
// no panel, which changes nothing, and waits for network errors for as long as networks take to
// find out that nobody has an address: 3.5 s, or 0.2 s when all addresses are loopback. Lights do
// not answer, so silence is the best there is. One check a device, in their order.
std::vector<Check> tryDevices(const std::vector<config::DeviceEntry> &devices);

} // namespace mirrorctl
