#include "platform/wayland/capture.h"

#include <algorithm>
#include <utility>

namespace platform::wayland {

namespace {

// The pause after a copy that the compositor refused.
constexpr Clock::duration refusalPause = std::chrono::milliseconds(100);

// After a frame, the capture thread ignores events until the next copy: while the screen moves,
// this saves a wake-up per frame. The pause includes `handlerLag`, since the minimum frame time
// counts from the call of the handler.
constexpr Clock::duration longestPause = std::chrono::milliseconds(100);
constexpr Clock::duration handlerLag = std::chrono::microseconds(200);

// Has the compositor offer a copy of the display; null when it does not.
const Output *awaitOffer(Compositor &compositor, std::uint32_t display, ScreenCopy &copy) {
    const Output *output = compositor.find(display);
    if (output == nullptr || compositor.sharedMemory() == nullptr ||
        compositor.screenCopies() == nullptr)
        return nullptr;
    copy.ask(output->object.get());
    compositor.connection().wait([&copy] { return copy.state() != ScreenCopy::State::Asked; });
    return copy.state() == ScreenCopy::State::Offered ? compositor.find(display) : nullptr;
}

} // namespace

std::optional<Picture> Capture::picture(std::uint32_t display) {
    const std::unique_ptr<Compositor> compositor = Compositor::open();
    if (!compositor)
        return std::nullopt;
    ScreenCopy copy(*compositor);
    const Output *output = compositor->find(display);
    const int changes = output == nullptr ? 0 : output->changes;
    output = awaitOffer(*compositor, display, copy);
    if (output == nullptr)
        return std::nullopt;
    const Aim aim{copy.layout(), output->transform};
    FramePainter painter(*compositor, aim.uprightWidth(), aim.uprightHeight());
    painter.aimAt(aim);
    copy.copy(painter.target(), ScreenCopy::When::Now);
    compositor->connection().wait([&copy] { return copy.state() != ScreenCopy::State::Copying; });
    output = compositor->find(display);
    if (copy.state() != ScreenCopy::State::Ready || output == nullptr || !output->settled ||
        output->changes != changes)
        return std::nullopt;
    painter.keep(copy.isUpsideDown());
    painter.paint();
    return Picture{static_cast<std::size_t>(aim.uprightWidth()),
                   static_cast<std::size_t>(aim.uprightHeight()), painter.sharedPixels()};
}

bool Capture::isPossible(std::uint32_t display) {
    const std::unique_ptr<Compositor> compositor = Compositor::open();
    if (!compositor)
        return false;
    ScreenCopy copy(*compositor);
    return awaitOffer(*compositor, display, copy) != nullptr;
}

std::unique_ptr<Capture> Capture::open(const CaptureSettings &settings, FrameGate &gate) {
    std::unique_ptr<Compositor> compositor = Compositor::open();
    if (!compositor || compositor->sharedMemory() == nullptr)
        return nullptr;
    std::unique_ptr<Capture> capture(new Capture(settings, gate, std::move(compositor)));
    capture->aim();
    capture->changesAsked = capture->output == nullptr ? 0 : capture->output->changes;
    if (awaitOffer(*capture->compositor, settings.display, capture->copy) == nullptr)
        return nullptr;
    capture->aim();
    return capture;
}

Capture::Capture(const CaptureSettings &settings, FrameGate &gate,
                 std::unique_ptr<Compositor> compositor_)
    : settings(settings), gate(gate), lead(settings.minimumFrameTime / 4),
      compositor(std::move(compositor_)), painter(*compositor, settings.width, settings.height),
      copy(*compositor) {}

void Capture::run(const std::function<void(CaptureEvent)> &onEvent) {
    while (!gate.isStopped()) {
        if (!compositor->connection().dispatch())
            return;
        if (compositor->takeLayoutChange())
            followLayout(onEvent);
        if (copy.state() == ScreenCopy::State::Ready)
            keepCopy();
        if (painter.hasCopy() && !(isWatchful() && copy.state() == ScreenCopy::State::Asked)) {
            showCopy(onEvent);
            continue;
        }
        if (copy.state() == ScreenCopy::State::Failed)
            startOver();
        const std::optional<Clock::time_point> due = nextStep();
        const bool now = due && *due <= Clock::now();
        if (now && gate.isFree()) {
            if (copy.state() == ScreenCopy::State::Idle)
                ask();
            else
                beginCopy();
            continue;
        }
        gate.wait(compositor->connection().descriptor(), now ? std::nullopt : due);
    }
}

void Capture::aim() {
    output = compositor->find(settings.display);
    global = output == nullptr ? 0 : output->global;
}

void Capture::followLayout(const std::function<void(CaptureEvent)> &onEvent) {
    const bool wasPresent = output != nullptr;
    const std::uint32_t before = global;
    aim();
    if (wasPresent && output != nullptr && global == before)
        return; // what has changed in it is looked at when the next copy is ready
    copy.drop();
    painter.discard();
    allWanted = true;
    unchanged = 0;
    if (wasPresent && output == nullptr)
        onEvent(CaptureEvent::Blank);
}

Clock::time_point Capture::earliestHandlerCall() const {
    return gate.lastHandlerCall() + settings.minimumFrameTime;
}

std::optional<Clock::time_point> Capture::nextStep() const {
    if (output == nullptr)
        return std::nullopt;
    switch (copy.state()) {
    case ScreenCopy::State::Idle:
        return notBefore;
    case ScreenCopy::State::Offered:
        return isWatchful() ? notBefore : std::max(notBefore, earliestHandlerCall() - lead);
    default:
        return std::nullopt;
    }
}

void Capture::ask() {
    copy.ask(output->object.get());
    changesAsked = output->changes;
}

void Capture::beginCopy() {
    using When = ScreenCopy::When;
    if (output->changes != changesAsked) {
        ask();
        return;
    }
    painter.aimAt({copy.layout(), output->transform});
    copy.copy(painter.target(), allWanted ? When::Now : When::Changed);
}

void Capture::keepCopy() {
    // The output was turned or resized meanwhile: the pixels may be in the wrong place.
    if (!output->settled || output->changes != changesAsked) {
        startOver();
        return;
    }
    // While the handler reads, the frame may not be painted, and afterwards this would not be the
    // newest picture.
    if (gate.isFree())
        painter.keep(copy.isUpsideDown());
    else
        allWanted = true;
    ask();
    compositor->connection().flush();
}

// Some compositors give the whole screen to a window that covers it while no request waits for a
// change, and take the end of that for a change. So after a copy that shows none, the next request
// is made at once, and the one after that even before the copy is looked at, which takes a while.
// If there is still no change, something is drawn again and again that looks the same: back to the
// usual pace.
void Capture::showCopy(const std::function<void(CaptureEvent)> &onEvent) {
    constexpr int manyUnchanged = 3;
    const bool isSame = copy.state() == ScreenCopy::State::Offered &&
                        painter.aim() == Aim{copy.layout(), output->transform};
    if (isWatchful() && isSame) {
        beginCopy();
        compositor->connection().flush();
    }
    if (painter.paint() || allWanted) {
        unchanged = 0;
        deliver(onEvent);
        return;
    }
    unchanged = unchanged == manyUnchanged ? 1 : unchanged + 1;
    if (unchanged == manyUnchanged)
        notBefore = Clock::now() + settings.minimumFrameTime;
}

void Capture::deliver(const std::function<void(CaptureEvent)> &onEvent) {
    allWanted = false;
    while (Clock::now() < earliestHandlerCall() && !gate.isStopped())
        gate.wait(-1, earliestHandlerCall());
    const Clock::time_point pauseUntil =
        Clock::now() + std::min(settings.minimumFrameTime, longestPause) + handlerLag - lead;
    gate.handOver();
    onEvent(CaptureEvent::Frame);
    if (settings.minimumFrameTime > Clock::duration::zero())
        gate.wait(-1, pauseUntil);
}

void Capture::startOver() {
    copy.drop();
    allWanted = true;
    unchanged = 0;
    notBefore = Clock::now() + refusalPause;
}

} // namespace platform::wayland
