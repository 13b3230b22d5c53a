#include "tools/mirrorctl/run/run.h"

#include "tools/config/modes.h"
#include "tools/lights/json.h"
#include "tools/lights/text.h"

#include <algorithm>
#include <cstdio>
#include <sys/ioctl.h>

namespace mirrorctl {

using config::matchMode;
using config::paletteMode;
using lights::counted;
using lights::format;
using lights::put;

// "[######--------------]  30 %"
static std::string bar(double part) {
    constexpr int cells = 20;
    const double done = std::clamp(part, 0.0, 1.0);
    const int full = static_cast<int>(done * cells);
    return "[" + std::string(static_cast<std::size_t>(full), '#') +
           std::string(static_cast<std::size_t>(cells - full), '-') + "] " +
           format("%3d %%", static_cast<int>(done * 100.0));
}

// The frames in words. Match mode sends all the time, melt and fade mode when the colour changes,
// palette mode to each panel at the panel's own times.
static std::string activity(const RunState &state) {
    if (!state.isCounted)
        return "frames not counted";
    if (state.mode == paletteMode)
        return state.frames == 0 ? format("nothing sent for %.1f s", state.silence)
                                 : format("running, last datagram %.1f s ago", state.silence);
    std::string text = counted(state.frames, "frame");
    constexpr double longSilence = 1.0;
    if (state.mode != matchMode)
        return text + (state.frames == 0 ? ", no change of colour yet"
                                         : format(", last change %.1f s ago", state.silence));
    if (state.silence > longSilence)
        return text + format(", NOTHING SENT for %.1f s", state.silence);
    if (state.pace)
        text += format("  %.1f/s  jitter %.1f ms", state.pace->rate, state.pace->jitter * 1e3);
    return text;
}

std::string liveLine(const RunState &state, std::size_t columns) {
    std::string text;
    if (state.planned)
        text = bar(state.elapsed / *state.planned) +
               format("  %.0f of %.0f s", state.elapsed, *state.planned);
    else
        text = format("%.0f s", state.elapsed);
    if (state.server == ServerState::Gone)
        text += format("  DISPLAY SERVER GONE for %.0f s, waiting for it", state.outage);
    else if (state.server == ServerState::Silent)
        text += format("  DISPLAY SERVER SILENT for %.0f s", state.outage);
    if (state.server != ServerState::Gone)
        text += "  " + activity(state);
    text += state.errors == 0
                ? "  no error"
                : "  " + counted(state.errors, "error") + ", last: " + state.lastError;
    return text.substr(0, columns);
}

std::string summary(const RunState &state) {
    std::string text;
    if (state.isCounted && state.mode == paletteMode)
        text = "Palette mode sends to each panel every 1.0 to 1.4 s; counted " +
               counted(state.frames, "datagram") + " to one panel.\n";
    else if (state.isCounted)
        text = "Sent " + counted(state.frames, "frame") + " to every device" +
               (state.mode == matchMode && state.pace
                    ? format(", %.1f a second, jitter %.2f ms", state.pace->rate,
                             state.pace->jitter * 1e3)
                    : std::string()) +
               ".\n";
    if (state.wholeOutage > 0.0)
        text += format("The display server was gone for %.1f s of this.\n", state.wholeOutage);
    if (state.errors > 0)
        text += "The library reported " + counted(state.errors, "error") +
                ", the last: " + state.lastError + "\n";
    return text;
}

std::string jsonLine(const char *event, const RunState &state) {
    rapidjson::StringBuffer buffer;
    lights::Json json(buffer);
    static constexpr const char *servers[] = {"answering", "silent", "gone"};
    const auto pace = state.mode == matchMode ? state.pace : std::nullopt;
    json.SetMaxDecimalPlaces(3);
    json.StartObject();
    put(json, "event", event);
    put(json, "mode", config::modeName(state.mode));
    put(json, "seconds", state.elapsed);
    put(json, state.mode == paletteMode ? "signsOfLife" : "frames",
        state.isCounted ? std::optional(state.frames) : std::nullopt);
    put(json, "rate", pace ? std::optional(pace->rate) : std::nullopt);
    put(json, "jitterMs", pace ? std::optional(pace->jitter * 1e3) : std::nullopt);
    put(json, "silence", state.isCounted ? std::optional(state.silence) : std::nullopt);
    put(json, "server", servers[static_cast<int>(state.server)]);
    put(json, "errors", state.errors);
    put(json, "lastError", state.errors > 0 ? std::optional(state.lastError) : std::nullopt);
    json.EndObject();
    return buffer.GetString();
}

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
        // Clamped, since the wall clock may have been set meanwhile.
        lastFrame = now - std::clamp(wallClock - tally.lastTime(), 0.0, now - lastReading);
    }
    lastReading = now;
}

void RunReporter::reportStart() {
    if (plan.style != ReportStyle::Json)
        dprintf(messages.output(), "Mirroring display %u in %s mode onto %s. Ctrl-C stops.\n",
                static_cast<std::uint32_t>(plan.document.displayID),
                config::modeName(plan.document.mode), lights.c_str());
    report("started");
}

void RunReporter::reportWhenDue() {
    if (plan.style != ReportStyle::Plain && elapsed() >= nextReport)
        report("running");
}

std::optional<double> RunReporter::nextTime() const {
    // Frames wait in the socket, with their arrival times; it holds some hundreds.
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
        dprintf(messages.output(), "\r\x1b[K");
}

void RunReporter::reportEnd() {
    const RunState end = state(true);
    if (plan.style == ReportStyle::Json)
        dprintf(messages.output(), "%s\n", jsonLine("stopped", end).c_str());
    else
        dprintf(messages.output(), "Mirrored display %u for %.1f s onto %s.\n%s",
                static_cast<std::uint32_t>(plan.document.displayID), end.elapsed, lights.c_str(),
                summary(end).c_str());
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
    const int out = messages.output();
    if (plan.style == ReportStyle::Json)
        dprintf(out, "%s\n", jsonLine(event, state(false)).c_str());
    else if (plan.style == ReportStyle::Live)
        dprintf(out, "\r\x1b[K%s", liveLine(state(false), terminalColumns(out) - 1).c_str());
    nextReport = elapsed() + (plan.style == ReportStyle::Live ? 0.5 : 1.0);
}

} // namespace mirrorctl
