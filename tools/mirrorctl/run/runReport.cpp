#include "tools/mirrorctl/run/runReport.h"

#include "tools/config/modes.h"
#include "tools/lights/text.h"

#include <algorithm>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace mirrorctl {

using config::matchMode;
using config::paletteMode;
using lights::counted;
using lights::format;

// "[######--------------]  30 %"
static std::string bar(double part) {
    constexpr int cells = 20;
    const double done = std::clamp(part, 0.0, 1.0);
    const int full = static_cast<int>(done * cells);
    return "[" + std::string(static_cast<std::size_t>(full), '#') +
           std::string(static_cast<std::size_t>(cells - full), '-') + "] " +
           format("%3d %%", static_cast<int>(done * 100.0));
}

// The frames in the words of the mode: match mode sends all the time, melt and fade at a change of
// colour, palette each panel in its own time.
static std::string activity(const RunState &state) {
    if (!state.isCounted)
        return "frames not counted";
    if (state.mode == paletteMode)
        return state.frames == 0 ? format("no sign of life for %.1f s", state.silence)
                                 : format("alive, last sign %.1f s ago", state.silence);
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
        text = "Palette mode sends each panel something every 1.0 to 1.4 s; " +
               counted(state.frames, "sign") + " of life.\n";
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
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    const auto number = [&](const char *name, std::optional<double> value) {
        writer.Key(name);
        value ? writer.Double(*value) : writer.Null();
    };
    static constexpr const char *servers[] = {"answering", "silent", "gone"};
    const auto pace = state.mode == matchMode ? state.pace : std::nullopt;
    writer.SetMaxDecimalPlaces(3);
    writer.StartObject();
    writer.Key("event");
    writer.String(event);
    writer.Key("mode");
    writer.String(config::modeName(state.mode));
    number("seconds", state.elapsed);
    writer.Key(state.mode == paletteMode ? "signsOfLife" : "frames");
    state.isCounted ? writer.Uint64(state.frames) : writer.Null();
    number("rate", pace ? std::optional(pace->rate) : std::nullopt);
    number("jitterMs", pace ? std::optional(pace->jitter * 1e3) : std::nullopt);
    number("silence", state.isCounted ? std::optional(state.silence) : std::nullopt);
    writer.Key("server");
    writer.String(servers[static_cast<int>(state.server)]);
    writer.Key("errors");
    writer.Uint64(state.errors);
    writer.Key("lastError");
    state.errors > 0 ? writer.String(state.lastError.c_str()) : writer.Null();
    writer.EndObject();
    return buffer.GetString();
}

} // namespace mirrorctl
