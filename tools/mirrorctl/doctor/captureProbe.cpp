#include "mirror/mirrorInterface.h"
#include "tools/config/modes.h"
#include "tools/lights/datagram.h"
#include "tools/mirrorctl/doctor/doctor.h"
#include "tools/mirrorctl/layout/layoutPlan.h"
#include "tools/mirrorctl/libraryMessages.h"
#include "tools/mirrorctl/loopbackReceiver.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <optional>
#include <vector>

namespace mirrorctl {

namespace {

// A frame: the records of a grid of panels over the screen and of one panel on the mark.
struct Picture {
    std::vector<lights::Record> panels;
    double time = 0.0; // of its arrival, wall clock in seconds

    bool isLit() const {
        return std::any_of(panels.begin(), panels.end(), [](const lights::Record &panel) {
            return panel.colour != lights::Colour();
        });
    }
};

class CaptureProbe {
public:
    CaptureProbe(const Display &display_, bool mayMark_, const StopSignals &signals_)
        : display(display_), mayMark(mayMark_), signals(signals_), receiver({}) {}

    Check run();

private:
    using Clock = std::chrono::steady_clock;

    std::string document() const;
    // Receives pictures until one satisfies `isWanted`; false after `seconds` without one, or when
    // a signal came.
    bool await(double seconds, const std::function<bool(const Picture &)> &isWanted);
    Check look();
    Check lookForMark(bool isLit);
    // Seconds until the mark appeared in a picture. Nothing if it did not, or if it was not drawn,
    // with the cause in `reason`.
    std::optional<double> timeMark(std::uint32_t colour, std::string &reason);
    Check lookWithoutMark(bool isLit, const std::string &reason) const;

    Check result(Verdict verdict, const std::string &finding, const std::string &remedy = {},
                 ExitStatus status = ExitStatus::NothingSent) const {
        return {verdict, "display " + std::to_string(display.displayID), finding, remedy, status};
    }
    // The finding, followed by the library's last message if there is one.
    std::string withMessage(const std::string &finding) const {
        return messages.count() == 0 ? finding : finding + "; the library said: " + messages.last();
    }

    const Display &display;
    const bool mayMark;
    const StopSignals &signals;
    LoopbackReceiver receiver;
    LibraryMessages messages;
    std::optional<Picture> last;
};

} // namespace

static constexpr std::size_t gridSide = 8;
static constexpr std::size_t markPanel = gridSide * gridSide;
static constexpr double patience = 2.0;      // seconds
static constexpr double briefPatience = 0.5; // when a mark follows, which proves more

std::string CaptureProbe::document() const {
    LayoutPlan plan;
    plan.shape.rows = gridSide;
    plan.shape.columns = gridSide;
    plan.screen = {display.width, display.height};
    plan.addresses = {receiver.device().ip};
    plan.controlVersion = receiver.device().controlVersion;
    config::Document document{static_cast<std::int32_t>(display.displayID), config::matchMode,
                              layOut(plan)};
    config::DeviceEntry &device = document.devices.front();
    constexpr double fivePixels = 0.05; // scale factor; well within the mark
    constexpr int middle = ScreenMark::first + ScreenMark::side / 2;
    device.scaleFactor = fivePixels;
    device.panels.push_back({static_cast<std::int32_t>(markPanel + 1), middle, middle});
    return config::documentText(document);
}

bool CaptureProbe::await(double seconds, const std::function<bool(const Picture &)> &isWanted) {
    const auto end = Clock::now() + std::chrono::duration<double>(seconds);
    const auto layout = lights::layoutOf(receiver.device().controlVersion);
    for (;;) {
        while (const auto datagram = receiver.next()) {
            Picture picture{lights::decode(layout, datagram->bytes).records, datagram->time};
            if (picture.panels.size() != markPanel + 1)
                continue;
            last = std::move(picture);
            if (isWanted(*last))
                return true;
        }
        messages.read(false);
        const std::chrono::duration<double> left = end - Clock::now();
        if (left.count() <= 0.0 || signals.firstSignal() != 0)
            return false;
        awaitReadable({receiver.descriptor(), messages.descriptor(), signals.descriptor()},
                      left.count());
    }
}

static bool isNear(const lights::Record &panel, std::uint32_t colour) {
    constexpr int maxDifference = 12; // a screen with few colours rounds
    const auto isClose = [&](int channel, int shift) {
        return std::abs(channel - static_cast<int>(colour >> shift & 0xFF)) <= maxDifference;
    };
    return isClose(panel.colour.red, 16) && isClose(panel.colour.green, 8) &&
           isClose(panel.colour.blue, 0);
}

Check CaptureProbe::lookWithoutMark(bool isLit, const std::string &reason) const {
    if (isLit)
        return result(Verdict::Good,
                      "a frame arrives; how old it is cannot be told without a mark (" + reason +
                          ")");
    return result(
        Verdict::Unsure,
        "nothing but black within 2 s: the screen is black, or it is not seen; that cannot "
        "be told without a mark (" +
            reason + ")",
        "show something on the screen and try again");
}

std::optional<double> CaptureProbe::timeMark(std::uint32_t colour, std::string &reason) {
    const ScreenMark mark = drawMark(display, colour);
    reason = mark.reason;
    if (!reason.empty())
        return std::nullopt;
    const auto isMarked = [&](const Picture &picture) {
        return isNear(picture.panels[markPanel], colour);
    };
    return await(patience, isMarked) ? std::optional(last->time - mark.shownAt) : std::nullopt;
}

Check CaptureProbe::lookForMark(bool isLit) {
    // The first mark may prove nothing: the screen may show its colour there anyway, and an
    // incomplete frame may show anything. The second proves it, since it replaces the first.
    std::string reason;
    auto delay = timeMark(0xFF00FF, reason);
    if (delay)
        delay = timeMark(0x00FF00, reason);
    if (signals.firstSignal() != 0)
        return result(Verdict::Unsure, "interrupted");
    if (!reason.empty())
        return lookWithoutMark(isLit, reason);
    if (delay)
        return result(Verdict::Good,
                      "frames arrive; a mark drawn on the screen came out " +
                          std::to_string(std::max(0, static_cast<int>(*delay * 1e3))) +
                          " ms later");
    if (isLit || last->isLit())
        return result(Verdict::Bad,
                      "a picture arrives, but not the mark that was drawn on the screen: the "
                      "picture is older than 2 s, or something covers the mark",
                      "unlock the screen, leave full-screen programs and try again; if that does "
                      "not help, log out and in again");
    return result(Verdict::Bad,
                  "nothing but black arrives, also where a mark was drawn: the screen is not seen",
                  "wake and unlock the screen");
}

Check CaptureProbe::look() {
    const bool isLit = await(mayMark ? briefPatience : patience,
                             [](const Picture &picture) { return picture.isLit(); });
    if (signals.firstSignal() != 0)
        return result(Verdict::Unsure, "interrupted");
    if (!last)
        return result(Verdict::Bad, withMessage("mirroring started, but nothing was sent"),
                      "try again; another program may hold the display");
    return mayMark ? lookForMark(isLit) : lookWithoutMark(isLit, "--no-mark was given");
}

Check CaptureProbe::run() {
    if (!receiver.reason().empty())
        return result(Verdict::Unsure, "could not be tried, since no loopback address is free (" +
                                           receiver.reason() + ")");
    std::string text = document();
    if (setMirrorConfig(text.data()) != 1) {
        fflush(stdout);
        messages.read(false);
        return result(Verdict::Bad, withMessage("capturing it was refused"),
                      "on macOS allow screen recording for this program in the privacy settings "
                      "and start it again; on Linux the session grants no capture, or memory ran "
                      "out",
                      ExitStatus::CaptureRefused);
    }
    if (startMirror() != 1)
        return result(Verdict::Bad, "mirroring could not be started",
                      "are there free processes and memory?", ExitStatus::StartFailed);
    Check check = look();
    if (stopMirror() != 1)
        return result(Verdict::Bad, "mirroring could not be stopped properly", "",
                      ExitStatus::Failed);
    return check;
}

Check probeCapture(const Display &display, bool mayMark, const StopSignals &signals) {
    return CaptureProbe(display, mayMark, signals).run();
}

} // namespace mirrorctl
