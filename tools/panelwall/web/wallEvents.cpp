#include "tools/panelwall/web/wallEvents.h"

#include "tools/panelwall/statusText.h"

#include <algorithm>
#include <cmath>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace panelwall {

namespace {

const char recordingAdvice[] = "The recording has a pause here, or has been played to its end.";

using Json = rapidjson::Writer<rapidjson::StringBuffer>;

// Larger numbers help nobody, and JSON knows no infinity.
constexpr double largestLength = 1e9;

void string(Json &json, const char *key, const std::string &value) {
    json.Key(key);
    json.String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
}

// With one decimal.
void number(Json &json, const char *key, double value) {
    json.Key(key);
    json.Double(std::round(value * 10) / 10);
}

// Whole milliseconds of the wall's clock, the same in every event that tells of one moment.
std::int64_t timeOf(Clock::time_point moment) {
    return std::chrono::ceil<std::chrono::milliseconds>(moment.time_since_epoch()).count();
}

double millisecondsOf(Clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

// Six hexadecimal digits a panel, "------" for one without a colour.
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

std::string event(const char *name, const rapidjson::StringBuffer &data) {
    return std::string("event: ") + name +
           "\ndata: " + std::string(data.GetString(), data.GetSize()) + "\n\n";
}

const char *nameOf(SizeSource source) {
    switch (source) {
    case SizeSource::given:
        return "given";
    case SizeSource::display:
        return "display";
    case SizeSource::panels:
        return "panels";
    }
    return "";
}

void writeDevice(Json &json, const WallDevice &device) {
    json.StartObject();
    string(json, "ip", device.ip);
    json.Key("port");
    json.Int(device.port);
    string(json, "layout", device.layout == Layout::narrow ? "narrow" : "wide");
    json.Key("side");
    json.Double(device.panels.empty() ? 0.0
                                      : std::min(2 * device.panels[0].halfSide, largestLength));
    json.Key("panels");
    json.StartArray();
    for (const WallPanel &panel : device.panels) {
        json.StartArray();
        json.Int(panel.panelID);
        json.Int(panel.centreX);
        json.Int(panel.centreY);
        json.EndArray();
    }
    json.EndArray();
    json.Key("rows");
    json.StartArray();
    if (device.history)
        for (const std::size_t panel : device.history->rowPanels())
            json.Uint64(panel);
    json.EndArray();
    json.EndObject();
}

void writeState(Json &json, const WallDevice &device, const std::optional<std::uint64_t> &lost,
                Clock::time_point now) {
    json.StartObject();
    json.Key("total");
    json.Uint64(device.datagrams);
    json.Key("rate");
    json.Uint64(device.rate.perSecond(now));
    if (const auto interval = device.arrivals.interval())
        number(json, "interval", *interval);
    if (const auto jitter = device.arrivals.jitter())
        number(json, "jitter", *jitter);
    json.Key("gaps");
    json.Uint64(device.arrivals.gaps());
    if (lost) {
        json.Key("lost");
        json.Uint64(*lost);
    }
    json.Key("malformed");
    json.Uint64(device.malformed);
    if (device.malformed > 0)
        string(json, "reason", device.lastMalformed);
    if (device.lastArrival)
        number(json, "age", millisecondsOf(now - *device.lastArrival));
    std::string sent;
    std::string shown;
    for (const WallPanel &panel : device.panels) {
        append(sent, panel.colour);
        append(shown, panel.shownAt(now));
    }
    string(json, "sent", sent);
    string(json, "shown", shown);
    json.Key("left");
    json.StartArray();
    for (const WallPanel &panel : device.panels)
        json.Int64(timeOf(now + panel.transition.left(now)) - timeOf(now));
    json.EndArray();
    json.Key("times");
    json.StartArray();
    for (const WallPanel &panel : device.panels)
        json.Uint(panel.transitionTime);
    json.EndArray();
    json.EndObject();
}

} // namespace

std::string wallEvent(const Wall &wall, const WallFacts &facts) {
    rapidjson::StringBuffer buffer;
    Json json(buffer);
    json.StartObject();
    string(json, "config", facts.config);
    string(json, "mode", modeName(facts.mode));
    json.Key("recording");
    json.Bool(facts.isRecording);
    json.Key("steady"); // whether the mode sends in a steady rhythm, so that gaps mean something
    json.Bool(facts.mode == 0);
    json.Key("width");
    json.Int(facts.screen.width);
    json.Key("height");
    json.Int(facts.screen.height);
    string(json, "sizeFrom", nameOf(facts.sizeSource));
    json.Key("unit");
    json.Int64(facts.transitionUnit.count());
    json.Key("slotLength");
    json.Int64(ColourHistory::slotLength.count());
    json.Key("slotCount");
    json.Int64(ColourHistory::slotCount);
    string(json, "advice", facts.isRecording ? recordingAdvice : adviseOnSilence(facts.mode));
    json.Key("tellingSilence");
    json.Int64(std::chrono::milliseconds(tellingSilence).count());
    json.Key("devices");
    json.StartArray();
    for (const WallDevice &device : wall.devices())
        writeDevice(json, device);
    json.EndArray();
    json.EndObject();
    return event("wall", buffer);
}

std::string pastEvent(const Wall &wall) {
    rapidjson::StringBuffer buffer;
    Json json(buffer);
    json.StartArray();
    std::string colours;
    for (const WallDevice &device : wall.devices()) {
        json.StartArray();
        if (device.history) {
            for (const ColourHistory::Entry &entry : device.history->entries()) {
                colours.clear();
                for (const auto &colour : entry.rows)
                    append(colours, colour);
                json.Int64(entry.slot);
                json.String(colours.data(), static_cast<rapidjson::SizeType>(colours.size()));
            }
        }
        json.EndArray();
    }
    json.EndArray();
    return event("past", buffer);
}

std::string nowEvent(const Wall &wall, const WallFacts &facts,
                     const std::vector<std::optional<std::uint64_t>> &lost, Clock::time_point now) {
    rapidjson::StringBuffer buffer;
    Json json(buffer);
    json.StartObject();
    json.Key("time");
    json.Int64(timeOf(now));
    json.Key("slot");
    json.Int64(ColourHistory::slotOf(now));
    number(json, "silence", millisecondsOf(now - wall.lastArrival().value_or(facts.start)));
    string(json, "warning", describeFlashes(wall, now));
    json.Key("heard");
    json.Bool(wall.lastArrival().has_value());
    json.Key("devices");
    json.StartArray();
    for (std::size_t i = 0; i < wall.devices().size(); ++i)
        writeState(json, wall.devices()[i], i < lost.size() ? lost[i] : std::nullopt, now);
    json.EndArray();
    json.EndObject();
    return event("now", buffer);
}

} // namespace panelwall
