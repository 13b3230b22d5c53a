#include "platform/x11/capture.h"

#include "platform/objects/signals.h"
#include "platform/x11/monitors.h"

#include <utility>

namespace platform::x11 {

namespace {

// How often the whole screen is read while something moves, and how long after the last change the
// capture checks for lost damage reports.
constexpr Clock::duration refreshPeriod = std::chrono::seconds(1);

// The pause after a read that the server refused.
constexpr Clock::duration refusalPause = std::chrono::milliseconds(100);

// After a frame, the capture thread ignores damage reports until the next frame is allowed: while
// the screen moves, this saves a second wake-up per frame. The pause includes `handlerLag`, since
// the minimum frame time counts from the call of the handler.
constexpr Clock::duration longestPause = std::chrono::milliseconds(100);
constexpr Clock::duration handlerLag = std::chrono::microseconds(200);

} // namespace

bool Capture::isPossible(std::uint32_t display) {
    const std::unique_ptr<Connection> connection = Connection::open();
    if (!connection)
        return false;
    const auto monitors = listMonitors(*connection);
    return monitors && findMonitor(*monitors, display) && PixelFormat::of(*connection) &&
           DamageWatch::isPossible(*connection);
}

std::unique_ptr<Capture> Capture::open(const CaptureSettings &settings, FrameGate &gate) {
    std::unique_ptr<Connection> connection = Connection::open();
    if (!connection)
        return nullptr;
    std::optional<PixelFormat> format = PixelFormat::of(*connection);
    if (!format || !DamageWatch::isPossible(*connection))
        return nullptr;
    // Watch the monitors before reading them, so that no change is missed in between.
    watchMonitors(*connection);
    std::unique_ptr<Capture> capture(
        new Capture(settings, gate, std::move(connection), std::move(*format)));
    if (!capture->aim() || !capture->present || capture->connection->failed())
        return nullptr;
    capture->connection->endWatch();
    return capture;
}

Capture::Capture(const CaptureSettings &settings, FrameGate &gate,
                 std::unique_ptr<Connection> connection_, PixelFormat format)
    : settings(settings), gate(gate), connection(std::move(connection_)),
      painter(std::make_unique<FramePainter>(*connection, std::move(format), settings.width,
                                             settings.height, PixelMemory::Sharing::WhenPossible)),
      damage(std::make_unique<DamageWatch>(*connection)) {}

void Capture::run(const std::function<void(CaptureEvent)> &onEvent) {
    while (!gate.isStopped()) {
        if (settings.minimumFrameTime > Clock::duration::zero() && Clock::now() < pauseUntil) {
            gate.wait(-1, pauseUntil);
            continue;
        }
        if (!takeEvents())
            return;
        // Waiting for a reply may move events into XCB's internal queue, where a wait on the
        // descriptor does not see them. So each pass that read a reply starts over and takes them
        // out first.
        if (layoutStale) {
            followLayout(onEvent);
            continue;
        }
        const std::optional<Clock::time_point> due = nextLook();
        const bool now = due && *due <= Clock::now();
        if (now && gate.isFree()) {
            look(onEvent);
            continue;
        }
        gate.wait(connection->descriptor(), now ? std::nullopt : due);
    }
}

bool Capture::takeEvents() {
    while (const Reply<xcb_generic_event_t> event{xcb_poll_for_event(connection->get())}) {
        constexpr int error = 0;
        if (event->response_type == error)
            continue;
        if (damage->isReport(*event))
            damaged = true;
        else
            layoutStale = true;
    }
    return !connection->failed();
}

// Finds the monitor's current position; false when the server does not reply.
bool Capture::aim() {
    const auto monitors = listMonitors(*connection);
    const std::optional<Rect> root = connection->rootArea();
    if (!monitors || !root)
        return false;
    const std::optional<Monitor> monitor = findMonitor(*monitors, settings.display);
    const bool moved = monitor && (monitor->area != monitorArea || *root != rootArea);
    if (moved) {
        monitorArea = monitor->area;
        rootArea = *root;
        painter->aimAt(monitorArea, rootArea);
    }
    if (moved || (monitor && !present))
        allWanted = true;
    present = monitor.has_value();
    return true;
}

void Capture::followLayout(const std::function<void(CaptureEvent)> &onEvent) {
    layoutStale = false;
    const bool wasPresent = present;
    if (aim() && wasPresent && !present)
        onEvent(CaptureEvent::Blank);
}

Clock::time_point Capture::earliestHandlerCall() const {
    return gate.lastHandlerCall() + settings.minimumFrameTime;
}

std::optional<Clock::time_point> Capture::nextLook() const {
    if (!present)
        return std::nullopt;
    if (damaged || allWanted)
        return std::max(notBefore, earliestHandlerCall() - lead);
    return lostDamageCheckTime;
}

// Takes the damage from the server and updates the frame. Done with `changed` false when nothing
// was drawn on the monitor.
ReadOutcome Capture::update(Clock::time_point now, bool &changed) {
    const Rect &visible = painter->visibleArea();
    damage->ask();
    // While everything moves, the pixels are requested together with the damage: one wait instead
    // of two.
    const bool together = allWanted || everythingMoves;
    const ReadOutcome first = together ? painter->paintAll() : ReadOutcome::Done;
    const Rect hit = intersect(damage->answer(), visible);
    changed = allWanted || !hit.empty();
    // The first damage of a watch is always the whole screen, so it is ignored here.
    everythingMoves = !allWanted && !visible.empty() && hit == visible;
    if (together || !changed) {
        if (together && first == ReadOutcome::Done)
            lastWhole = now;
        return first;
    }
    if (now - lastWhole < refreshPeriod)
        return painter->paint(hit);
    lastWhole = now;
    return painter->paintAll();
}

void Capture::look(const std::function<void(CaptureEvent)> &onEvent) {
    const Clock::time_point now = Clock::now();
    bool changed = false;
    const ReadOutcome outcome = update(now, changed);
    const bool inVain = damaged && !changed;
    damaged = false;
    lostDamageCheckTime.reset();
    if (outcome != ReadOutcome::Done) {
        allWanted = true;
        layoutStale = true;
        notBefore = now + refusalPause;
        return;
    }
    // Drawing on other monitors must not cause more work than drawing on this one.
    if (inVain)
        notBefore = now + settings.minimumFrameTime;
    if (!changed)
        return;
    allWanted = false;
    lostDamageCheckTime = now + refreshPeriod;
    lead = std::min(Clock::now() - now, settings.minimumFrameTime / 4);
    while (Clock::now() < earliestHandlerCall() && !gate.isStopped())
        gate.wait(-1, earliestHandlerCall());
    pauseUntil =
        Clock::now() + std::min(settings.minimumFrameTime, longestPause) + handlerLag - lead;
    gate.handOver();
    onEvent(CaptureEvent::Frame);
}

} // namespace platform::x11
