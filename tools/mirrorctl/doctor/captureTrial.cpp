#include "tools/mirrorctl/doctor/captureTrial.h"

#include "mirror/mirrorInterface.h"
#include "tools/mirrorctl/doctor/system.h"
#include "tools/mirrorctl/layout/layoutPlan.h"
#include "tools/mirrorctl/libraryWords.h"
#include "tools/mirrorctl/loopbackEar.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <optional>
#include <vector>

namespace mirrorctl {

namespace {

struct Seen {
    int red = 0;
    int green = 0;
    int blue = 0;
    bool isLit() const { return red > 0 || green > 0 || blue > 0; }
};

// The last frame that arrived: a grid of panels over the screen, and one on the mark.
struct Picture {
    std::vector<Seen> panels;
    double time = 0.0; // of its arrival, wall clock in seconds
    bool isLit() const {
        return std::any_of(panels.begin(), panels.end(),
                           [](const Seen &seen) { return seen.isLit(); });
    }
};

class Trial {
public:
    Trial(const Display &displayToTry, bool marks, const StopSignals &signalsToHeed)
        : display(displayToTry), mayMark(marks), signals(signalsToHeed), ear({}) {}

    Check run();
    bool interrupted = false;

private:
    using Clock = std::chrono::steady_clock;

    std::string document() const;
    // The next pictures, until one is as it should be; nothing after some seconds of others.
    std::optional<Picture> await(double seconds,
                                 const std::function<bool(const Picture &)> &isWanted);
    Check look();
    Check lookForMark(const std::optional<Picture> &lit);
    // How long a mark took to come out; nothing when it did not, or was not drawn for the reason.
    std::optional<double> timeMark(std::uint32_t colour, std::string &reason);
    Check lookWithoutMark(const std::optional<Picture> &lit, const std::string &reason) const;

    Check result(Verdict verdict, const std::string &found, const std::string &remedy = {},
                 ExitStatus status = ExitStatus::nothingSent) const {
        return {verdict, "display " + std::to_string(display.displayID), found, remedy, status};
    }

    const Display &display;
    const bool mayMark;
    const StopSignals &signals;
    LoopbackEar ear;
    LibraryWords words;
    std::optional<Picture> last;
};

} // namespace

static constexpr std::size_t gridSide = 8;
static constexpr std::size_t markPanel = gridSide * gridSide;
static constexpr double patience = 2.0;      // seconds
static constexpr double briefPatience = 0.5; // where a mark tells more than further waiting

std::string Trial::document() const {
    LayoutPlan plan;
    plan.shape.rows = gridSide;
    plan.shape.columns = gridSide;
    plan.displayID = static_cast<std::int32_t>(display.displayID);
    plan.screen = {display.width, display.height};
    plan.addresses = {ear.address()};
    plan.controlVersion = ear.controlVersion();
    config::Document lights = layOut(plan);
    config::DeviceEntry &device = lights.devices.front();
    constexpr double fivePixels = 0.05; // wide, and well within the mark
    constexpr int middle = ScreenMark::first + ScreenMark::side / 2;
    device.scaleFactor = fivePixels;
    device.panels.push_back({static_cast<std::int32_t>(markPanel + 1), middle, middle});
    return documentText(lights);
}

std::optional<Picture> Trial::await(double seconds,
                                    const std::function<bool(const Picture &)> &isWanted) {
    const auto end = Clock::now() + std::chrono::duration<double>(seconds);
    const std::size_t header = ear.controlVersion() == 1 ? 1 : 2;
    const std::size_t stride = ear.controlVersion() == 1 ? 7 : 8;
    for (;;) {
        unsigned char bytes[1024];
        std::size_t size = 0;
        Picture picture;
        while (ear.next(bytes, sizeof bytes, size, picture.time)) {
            if (size != header + stride * (markPanel + 1))
                continue;
            picture.panels.clear();
            for (std::size_t i = 0; i <= markPanel; ++i) {
                const unsigned char *colour = bytes + header + stride * i + 2;
                picture.panels.push_back({colour[0], colour[1], colour[2]});
            }
            last = picture;
            if (isWanted(picture))
                return picture;
        }
        words.read(false);
        const std::chrono::duration<double> left = end - Clock::now();
        if (left.count() <= 0.0)
            return std::nullopt;
        if (signals.waitForInput({ear.descriptor(), words.descriptor()}, left.count()) != 0) {
            interrupted = true;
            return std::nullopt;
        }
    }
}

static std::string milliseconds(double seconds) {
    return std::to_string(std::max(0, static_cast<int>(seconds * 1e3))) + " ms";
}

static bool isNear(const Seen &seen, std::uint32_t colour, int most) {
    const auto away = [&](int channel, int shift) {
        return std::abs(channel - static_cast<int>(colour >> shift & 0xFF)) <= most;
    };
    return away(seen.red, 16) && away(seen.green, 8) && away(seen.blue, 0);
}

Check Trial::lookWithoutMark(const std::optional<Picture> &lit, const std::string &reason) const {
    if (lit)
        return result(Verdict::good,
                      "a frame arrives; how old it is cannot be told without a mark (" + reason +
                          ")");
    return result(
        Verdict::unsure,
        "nothing but black within 2 s: the screen is black, or it is not seen; that cannot "
        "be told without a mark (" +
            reason + ")",
        "show something on the screen and try again");
}

std::optional<double> Trial::timeMark(std::uint32_t colour, std::string &reason) {
    const ScreenMark mark(display.width, display.height, colour);
    reason = mark.reason();
    if (!mark.isShown())
        return std::nullopt;
    constexpr int mostAway = 12; // a screen of few colours rounds
    const auto marked = await(patience, [&](const Picture &picture) {
        return isNear(picture.panels[markPanel], colour, mostAway);
    });
    if (!marked)
        return std::nullopt;
    return marked->time - mark.shownAt();
}

Check Trial::lookForMark(const std::optional<Picture> &lit) {
    // The screen may show the first colour there anyway, and until a frame is whole it is not known
    // what it shows. The second cannot be mistaken: a moment ago the first was there.
    std::string reason;
    auto delay = timeMark(0xFF00FF, reason);
    if (delay)
        delay = timeMark(0x00FF00, reason);
    if (interrupted)
        return result(Verdict::unsure, "interrupted");
    if (!reason.empty())
        return lookWithoutMark(lit, reason);
    if (delay)
        return result(Verdict::good, "frames arrive; a mark drawn on the screen came out " +
                                         milliseconds(*delay) + " later");
    if (lit || (last && last->isLit()))
        return result(Verdict::bad,
                      "a picture arrives, but not the mark that was drawn on the screen: the "
                      "picture is older than 2 s, or something covers the mark",
                      "unlock the screen, leave full-screen programs and try again; if that does "
                      "not help, log out and in again");
    return result(
        Verdict::bad,
        "nothing but black arrives, also where a mark was drawn: the screen is not seen",
        "wake and unlock the screen; if this is no X11 session of its own, log in to one");
}

Check Trial::look() {
    const auto lit = await(mayMark ? briefPatience : patience,
                           [](const Picture &picture) { return picture.isLit(); });
    if (interrupted)
        return result(Verdict::unsure, "interrupted");
    if (!last)
        return result(
            Verdict::bad,
            "mirroring started, but nothing was sent" +
                (words.lines() > 0 ? "; the library said: " + words.last() : std::string()),
            "try again; another program may hold the display");
    return mayMark ? lookForMark(lit) : lookWithoutMark(lit, "--no-mark was given");
}

Check Trial::run() {
    if (!ear.isThere())
        return result(Verdict::unsure, "could not be tried, since no loopback address is free (" +
                                           ear.reason() + ")");
    std::string text = document();
    if (setMirrorConfig(text.data()) != 1) {
        fflush(stdout);
        words.read(false);
        return result(
            Verdict::bad,
            "capturing it was refused" +
                (words.lines() > 0 ? "; the library said: " + words.last() : std::string()),
            "on macOS allow screen recording for this program in the privacy settings and "
            "start it again; on X11 the server grants no capture, or memory ran out",
            ExitStatus::captureRefused);
    }
    if (startMirror() != 1)
        return result(Verdict::bad, "mirroring could not be started",
                      "are there free processes and memory?", ExitStatus::startFailed);
    Check check = look();
    if (stopMirror() != 1)
        return result(Verdict::bad, "mirroring could not be stopped in order", "",
                      ExitStatus::failed);
    return check;
}

Check tryCapture(const Display &display, bool mayMark, const StopSignals &signals,
                 bool &interrupted) {
    Trial trial(display, mayMark, signals);
    Check check = trial.run();
    interrupted = interrupted || trial.interrupted;
    return check;
}

} // namespace mirrorctl
