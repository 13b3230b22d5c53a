#include "tools/config/modes.h"
#include "tools/lights/text.h"
#include "tools/mirrorctl/run/run.h"

#include <algorithm>
#include <cstdio>
#include <sys/ioctl.h>

namespace mirrorctl {

using lights::counted;

static std::string describeLights(const config::Document &document) {
    std::size_t panels = 0;
    for (const auto &device : document.devices)
        panels += device.panels.size();
    return counted(document.devices.size(), "device") + " with " + counted(panels, "panel");
}

static std::size_t terminalColumns(int fd) {
    winsize size = {};
    if (ioctl(fd, TIOCGWINSZ, &size) != 0 || size.ws_col == 0)
        return 80;
    return size.ws_col;
}

RunReporter::RunReporter(const RunPlan &plan_, LibraryMessages &messages_)
    : plan(plan_), messages(messages_), lights(describeLights(plan.document)) {}

void RunReporter::read() {
    messages.read(plan.style == ReportStyle::Plain);
    if (!plan.counter)
        return;
    const FrameTally &tally = plan.counter->tally();
    const auto before = tally.frames();
    plan.counter->read();
    const double now = elapsed();
    if (tally.frames() > before) {
        const double wallClock =
            std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch())
                .count();
        // The wall clock may have been set meanwhile.
        lastFrame = now - std::clamp(wallClock - tally.lastTime(), 0.0, now - lastReading);
    }
    lastReading = now;
}

void RunReporter::reportStart() {
    if (plan.style != ReportStyle::Json)
        std::fprintf(messages.output(), "Mirroring display %u in %s mode onto %s. Ctrl-C stops.\n",
                     static_cast<std::uint32_t>(plan.document.displayID),
                     config::modeName(plan.document.mode), lights.c_str());
    report("started");
}

void RunReporter::reportWhenDue() {
    if (plan.style != ReportStyle::Plain && elapsed() >= nextReport)
        report("running");
}

std::optional<double> RunReporter::nextTime() const {
    // Frames wait in the socket, with the time of their arrival; it holds some hundreds.
    constexpr double readingPause = 2.0;
    if (plan.style != ReportStyle::Plain)
        return nextReport;
    return plan.counter ? std::optional(lastReading + readingPause) : std::nullopt;
}

void RunReporter::reportServer(ServerState state, const char *event, const std::string &sentence) {
    if (state != server) {
        if (server == ServerState::Gone)
            outages += elapsed() - serverSince;
        server = state;
        serverSince = elapsed();
    }
    if (plan.style == ReportStyle::Plain)
        std::fprintf(stderr, "%s\n", sentence.c_str());
    else
        report(event);
}

void RunReporter::clearLine() {
    if (plan.style == ReportStyle::Live)
        std::fputs("\r\x1b[K", messages.output());
    std::fflush(messages.output());
}

void RunReporter::reportEnd() {
    const RunState end = state(true);
    if (plan.style == ReportStyle::Json)
        std::fprintf(messages.output(), "%s\n", jsonLine("stopped", end).c_str());
    else
        std::fprintf(messages.output(), "Mirrored display %u for %.1f s onto %s.\n%s",
                     static_cast<std::uint32_t>(plan.document.displayID), end.elapsed,
                     lights.c_str(), summary(end).c_str());
}

RunState RunReporter::state(bool atEnd) const {
    const double now = elapsed();
    const double outage = server == ServerState::Answering ? 0.0 : now - serverSince;
    RunState state;
    state.mode = plan.document.mode;
    state.elapsed = now;
    state.planned = plan.seconds;
    state.isCounted = plan.counter != nullptr;
    state.silence = now - lastFrame;
    state.errors = messages.count();
    state.lastError = messages.last();
    state.server = server;
    state.outage = outage;
    state.wholeOutage = outages + (server == ServerState::Gone ? outage : 0.0);
    if (!plan.counter)
        return state;
    const FrameTally &tally = plan.counter->tally();
    state.frames = tally.frames();
    if (atEnd)
        state.pace = tally.wholePace();
    else if (server != ServerState::Gone)
        state.pace = tally.recentPace();
    return state;
}

void RunReporter::report(const char *event) {
    FILE *out = messages.output();
    if (plan.style == ReportStyle::Json)
        std::fprintf(out, "%s\n", jsonLine(event, state(false)).c_str());
    else if (plan.style == ReportStyle::Live)
        std::fprintf(out, "\r\x1b[K%s",
                     liveLine(state(false), terminalColumns(fileno(out)) - 1).c_str());
    std::fflush(out);
    nextReport = elapsed() + (plan.style == ReportStyle::Live ? 0.5 : 1.0);
}

} // namespace mirrorctl
