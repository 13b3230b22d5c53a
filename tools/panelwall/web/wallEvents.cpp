#include "tools/panelwall/web/wallEvents.h"

#include "tools/panelwall/statusText.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <string_view>
#include <type_traits>

namespace panelwall {

namespace {

const char recordingAdvice[] = "The recording has a pause here, or has been played to its end.";

// Larger numbers are useless, and JSON has no infinity.
constexpr double largestLength = 1e9;

using Json = rapidjson::Writer<rapidjson::StringBuffer>;

// Writes a JSON value: fractions get one decimal; containers become arrays.
template <typename Value> void write(Json &json, const Value &value) {
    if constexpr (std::is_same_v<Value, bool>) {
        json.Bool(value);
    } else if constexpr (std::is_floating_point_v<Value>) {
        json.Double(std::round(value * 10) / 10);
    } else if constexpr (std::is_unsigned_v<Value>) {
        json.Uint64(value);
    } else if constexpr (std::is_integral_v<Value>) {
        json.Int64(value);
    } else if constexpr (std::is_convertible_v<Value, std::string_view>) {
        const std::string_view text = value;
        json.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
    } else {
        json.StartArray();
        for (const auto &element : value)
            write(json, element);
        json.EndArray();
    }
}

template <typename Value> void write(Json &json, const char *key, const Value &value) {
    json.Key(key);
    write(json, value);
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
    return std::chrono::duration<double, std::milli>(duration).count();
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
    write(json, "ip", device.ip);
    write(json, "port", device.port);
    write(json, "layout", device.layout == Layout::Narrow ? "narrow" : "wide");
    write(json, "side", std::min(side, largestLength));
    write(json, "panels", listOf(device.panels, [](const WallPanel &panel) {
              return std::array<std::int64_t, 3>{panel.panelID, panel.centreX, panel.centreY};
          }));
    write(json, "rows", device.history ? device.history->rowPanels() : std::vector<std::size_t>());
    json.EndObject();
}

void writeState(Json &json, const WallDevice &device, const std::optional<std::uint64_t> &lost,
                Clock::time_point now) {
    json.StartObject();
    write(json, "total", device.datagrams);
    write(json, "rate", device.arrivals.perSecond(now));
    if (const auto interval = device.arrivals.interval())
        write(json, "interval", *interval);
    if (const auto jitter = device.arrivals.jitter())
        write(json, "jitter", *jitter);
    write(json, "gaps", device.arrivals.gaps());
    if (lost)
        write(json, "lost", *lost);
    write(json, "malformed", device.malformed);
    if (device.malformed > 0)
        write(json, "reason", device.lastMalformed);
    if (const auto last = device.arrivals.last())
        write(json, "age", millisecondsOf(now - *last));
    std::string sent;
    std::string shown;
    for (const WallPanel &panel : device.panels) {
        append(sent, panel.colour);
        append(shown, panel.shownAt(now));
    }
    write(json, "sent", sent);
    write(json, "shown", shown);
    write(json, "left", listOf(device.panels, [&](const WallPanel &panel) {
              return timeOf(now + panel.transition.left(now)) - timeOf(now);
          }));
    write(json, "times",
          listOf(device.panels, [](const WallPanel &panel) { return panel.transitionTime; }));
    json.EndObject();
}

} // namespace

std::string wallEvent(const Wall &wall, const WallFacts &facts) {
    rapidjson::StringBuffer text;
    Json json(text);
    json.StartObject();
    write(json, "config", facts.config);
    write(json, "mode", modeName(facts.mode));
    write(json, "recording", facts.isRecording);
    write(json, "steady", facts.mode == 0); // a steady rhythm, in which gaps mean something
    write(json, "width", facts.screen.width);
    write(json, "height", facts.screen.height);
    write(json, "sizeFrom", facts.sizeFrom);
    write(json, "unit", facts.transitionUnit.count());
    write(json, "slotLength", ColourHistory::slotLength.count());
    write(json, "slotCount", ColourHistory::slotCount);
    write(json, "advice", facts.isRecording ? recordingAdvice : adviseOnSilence(facts.mode));
    write(json, "tellingSilence", std::chrono::milliseconds(tellingSilence).count());
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
                write(json, entry.slot);
                write(json, colours);
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
    write(json, "time", timeOf(now));
    write(json, "slot", ColourHistory::slotOf(now));
    write(json, "silence", millisecondsOf(now - wall.lastArrival().value_or(facts.start)));
    write(json, "warning", describeFlashes(wall, now));
    write(json, "heard", wall.lastArrival().has_value());
    json.Key("devices");
    json.StartArray();
    for (std::size_t i = 0; i < wall.devices().size(); ++i)
        writeState(json, wall.devices()[i], i < lost.size() ? lost[i] : std::nullopt, now);
    json.EndArray();
    json.EndObject();
    return event("now", text);
}

} // namespace panelwall
