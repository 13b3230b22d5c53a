#include "tools/panelwall/web/wallEvents.h"

#include "tools/lights/json.h"
#include "tools/panelwall/statusText.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace panelwall {

using lights::Json;
using lights::put;

namespace {

const char recordingAdvice[] = "The recording has a pause here, or has been played to its end.";

// Larger numbers are useless, and JSON has no infinity.
constexpr double largestLength = 1e9;

double toTenths(double value) {
    return std::round(value * 10) / 10;
}

// The function's result for each panel.
template <typename Function> auto listOf(const std::vector<WallPanel> &panels, Function function) {
    std::vector<decltype(function(panels[0]))> list;
    for (const WallPanel &panel : panels)
        list.push_back(function(panel));
    return list;
}

// Whole milliseconds of the wall's clock, so that all events give a moment the same number.
std::int64_t timeOf(Clock::time_point moment) {
    return std::chrono::ceil<std::chrono::milliseconds>(moment.time_since_epoch()).count();
}

double millisecondsOf(Clock::duration duration) {
    return toTenths(std::chrono::duration<double, std::milli>(duration).count());
}

// Six hexadecimal digits per panel, "------" for one without a colour.
void append(std::string &text, const std::optional<Colour> &colour) {
    static const char digits[] = "0123456789abcdef";
    if (!colour) {
        text += "------";
        return;
    }
    for (const std::uint8_t channel : {colour->red, colour->green, colour->blue}) {
        text += digits[channel >> 4];
        text += digits[channel & 15];
    }
}

std::string event(const char *name, const rapidjson::StringBuffer &text) {
    return std::string("event: ") + name + "\ndata: " + text.GetString() + "\n\n";
}

void writeDevice(Json &json, const WallDevice &device) {
    const double side = device.panels.empty() ? 0 : 2 * device.panels[0].halfSide;
    json.StartObject();
    put(json, "ip", device.ip);
    put(json, "port", device.port);
    put(json, "layout", device.layout == Layout::Narrow ? "narrow" : "wide");
    put(json, "side", std::min(side, largestLength));
    put(json, "panels", listOf(device.panels, [](const WallPanel &panel) {
            return std::array<std::int64_t, 3>{panel.panelID, panel.centreX, panel.centreY};
        }));
    put(json, "rows", device.history ? device.history->rowPanels() : std::vector<std::size_t>());
    json.EndObject();
}

void writeState(Json &json, const WallDevice &device, const std::optional<std::uint64_t> &lost,
                Clock::time_point now) {
    json.StartObject();
    put(json, "total", device.datagrams);
    put(json, "rate", device.arrivals.perSecond(now));
    if (const auto interval = device.arrivals.interval())
        put(json, "interval", toTenths(*interval));
    if (const auto jitter = device.arrivals.jitter())
        put(json, "jitter", toTenths(*jitter));
    put(json, "gaps", device.arrivals.gaps());
    if (lost)
        put(json, "lost", *lost);
    put(json, "malformed", device.malformed);
    if (device.malformed > 0)
        put(json, "reason", device.lastMalformed);
    if (const auto last = device.arrivals.last())
        put(json, "age", millisecondsOf(now - *last));
    std::string sent;
    std::string shown;
    for (const WallPanel &panel : device.panels) {
        append(sent, panel.colour);
        append(shown, panel.shownAt(now));
    }
    put(json, "sent", sent);
    put(json, "shown", shown);
    put(json, "left", listOf(device.panels, [&](const WallPanel &panel) {
            return timeOf(now + panel.transition.left(now)) - timeOf(now);
        }));
    put(json, "times",
        listOf(device.panels, [](const WallPanel &panel) { return panel.transitionTime; }));
    json.EndObject();
}

} // namespace

std::string wallEvent(const Wall &wall, const WallFacts &facts) {
    rapidjson::StringBuffer text;
    Json json(text);
    json.StartObject();
    put(json, "config", facts.config);
    put(json, "mode", modeName(facts.mode));
    put(json, "recording", facts.isRecording);
    put(json, "steady", facts.mode == 0); // a steady rhythm, in which gaps mean something
    put(json, "width", facts.screen.width);
    put(json, "height", facts.screen.height);
    put(json, "sizeFrom", facts.sizeFrom);
    put(json, "unit", facts.transitionUnit.count());
    put(json, "slotLength", ColourHistory::slotLength.count());
    put(json, "slotCount", ColourHistory::slotCount);
    put(json, "advice", facts.isRecording ? recordingAdvice : adviseOnSilence(facts.mode));
    put(json, "tellingSilence", std::chrono::milliseconds(tellingSilence).count());
    json.Key("devices");
    json.StartArray();
    for (const WallDevice &device : wall.devices())
        writeDevice(json, device);
    json.EndArray();
    json.EndObject();
    return event("wall", text);
}

std::string pastEvent(const Wall &wall) {
    rapidjson::StringBuffer text;
    Json json(text);
    json.StartArray();
    for (const WallDevice &device : wall.devices()) {
        json.StartArray();
        if (device.history) {
            for (const ColourHistory::Entry &entry : device.history->entries()) {
                std::string colours;
                for (const auto &colour : entry.rows)
                    append(colours, colour);
                put(json, entry.slot);
                put(json, colours);
            }
        }
        json.EndArray();
    }
    json.EndArray();
    return event("past", text);
}

std::string nowEvent(const Wall &wall, const WallFacts &facts,
                     const std::vector<std::optional<std::uint64_t>> &lost, Clock::time_point now) {
    rapidjson::StringBuffer text;
    Json json(text);
    json.StartObject();
    put(json, "time", timeOf(now));
    put(json, "slot", ColourHistory::slotOf(now));
    put(json, "silence", millisecondsOf(now - wall.lastArrival().value_or(facts.start)));
    put(json, "warning", describeFlashes(wall, now));
    put(json, "heard", wall.lastArrival().has_value());
    json.Key("devices");
    json.StartArray();
    for (std::size_t i = 0; i < wall.devices().size(); ++i)
        writeState(json, wall.devices()[i], i < lost.size() ? lost[i] : std::nullopt, now);
    json.EndArray();
    json.EndObject();
    return event("now", text);
}

} // namespace panelwall
