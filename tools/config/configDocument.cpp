#include "tools/config/configDocument.h"

#include "tools/config/tree.h"
#include "tools/lights/json.h"
#include "tools/lights/text.h"

#include <algorithm>
#include <limits>
#include <rapidjson/prettywriter.h>
#include <utility>

namespace config {

using lights::put;
using Value = rapidjson::Value;

// Missing or mistyped values read as 0 or empty; array elements keep their indices.

static const Value &member(const Value &object, const char *name) {
    static const Value nothing;
    if (!object.IsObject())
        return nothing;
    const auto found = object.FindMember(name);
    return found == object.MemberEnd() ? nothing : found->value;
}

static std::int32_t integer(const Value &object, const char *name) {
    const Value &value = member(object, name);
    return value.IsInt() ? value.GetInt() : 0;
}

template <typename Read> static auto elements(const Value &object, const char *name, Read read) {
    std::vector<decltype(read(object))> list;
    const Value &value = member(object, name);
    if (!value.IsArray())
        return list;
    list.reserve(value.Size());
    for (const auto &element : value.GetArray())
        list.push_back(read(element));
    return list;
}

static PanelEntry readPanel(const Value &panel) {
    return {integer(panel, "panelID"), integer(panel, "centroidX"), integer(panel, "centroidY")};
}

static DeviceEntry readDevice(const Value &device) {
    const Value &ip = member(device, "ip");
    const Value &scaleFactor = member(device, "scaleFactor");
    return {ip.IsString() ? ip.GetString() : "", // up to a zero character, as the library keeps it
            integer(device, "controlVersion"), integer(device, "shapeType"),
            scaleFactor.IsNumber() ? scaleFactor.GetDouble() : 0.0,
            elements(device, "panels", readPanel)};
}

// Leaves `value` as it is if the member is missing or mistyped.
static void readInto(const Value &object, const char *name, std::int32_t &value) {
    if (const Value &found = member(object, name); found.IsInt())
        value = found.GetInt();
}

static void readInto(const Value &object, const char *name, double &value) {
    if (const Value &found = member(object, name); found.IsNumber())
        value = found.GetDouble();
}

static void readInto(const Value &object, const char *name, std::string &value) {
    if (const Value &found = member(object, name); found.IsString())
        value.assign(found.GetString(), found.GetStringLength());
}

static OutputEntry readOutput(const Value &object) {
    OutputEntry output;
    std::string protocol;
    readInto(object, "protocol", protocol);
    output.protocol = protocolNamed(protocol).value_or(output.protocol);
    output.port = traitsOf(output.protocol).port;
    output.universe = traitsOf(output.protocol).firstUniverse;
    readInto(object, "ip", output.ip);
    readInto(object, "device", output.device);
    readInto(object, "port", output.port);
    readInto(object, "universe", output.universe);
    readInto(object, "priority", output.priority);
    readInto(object, "interface", output.interface);
    readInto(object, "firstPixel", output.firstPixel);
    readInto(object, "pixelsPerPanel", output.pixelsPerPanel);
    readInto(object, "colourOrder", output.colourOrder);
    readInto(object, "gamma", output.gamma);
    readInto(object, "whiteBalance", output.whiteBalance);
    readInto(object, "brightness", output.brightness);
    readInto(object, "smoothing", output.smoothing);
    return output;
}

static std::optional<BridgeEntry> readBridge(const Value &root) {
    const Value &object = member(root, "lightbridge");
    if (!object.IsObject())
        return std::nullopt;
    BridgeEntry bridge;
    bridge.outputs = elements(object, "outputs", readOutput);
    for (std::size_t i = 0; i < bridge.outputs.size(); ++i)
        bridge.outputs[i].index = i;
    readInto(object, "atEnd", bridge.atEnd);
    readInto(object, "stopAfter", bridge.stopAfter);
    readInto(object, "framesPerSecond", bridge.framesPerSecond);
    return bridge;
}

Reading readText(std::string text) {
    Reading reading;
    reading.text = std::move(text);
    Problem problem;
    reading.tree = parse(reading.text, problem);
    if (!reading.tree) {
        reading.problems.push_back(std::move(problem));
        return reading;
    }
    const Value &root = reading.tree->root;
    check(reading);
    reading.document = {integer(root, "displayID"), integer(root, "mode"),
                        elements(root, "devices", readDevice), readBridge(root)};
    locate(reading, reading.problems);
    return reading;
}

Reading review(Reading reading, const std::optional<ScreenSize> &screen) {
    if (!reading.tree)
        return reading;
    auto warnings = findWarnings(reading.document, screen, FaultyParts(reading.problems));
    for (auto *more : {&reading.unknownMembers, &warnings}) {
        locate(reading, *more);
        for (auto &problem : *more)
            if (reading.problems.size() <= maxProblems)
                reading.problems.push_back(std::move(problem));
    }
    return reading;
}

std::optional<ScreenSize> parseScreenSize(const std::string &text, std::uint32_t largest) {
    const auto x = text.find('x');
    if (x == std::string::npos)
        return std::nullopt;
    const auto width = lights::wholeNumber(std::string_view(text).substr(0, x), largest);
    const auto height = lights::wholeNumber(std::string_view(text).substr(x + 1), largest);
    return width && height ? std::optional(ScreenSize{*width, *height}) : std::nullopt;
}

template <typename Writer> static void writeBridge(Writer &json, const BridgeEntry &bridge) {
    json.Key("lightbridge");
    json.StartObject();
    json.Key("outputs");
    json.StartArray();
    for (const OutputEntry &output : bridge.outputs) {
        const ProtocolTraits &traits = traitsOf(output.protocol);
        json.StartObject();
        put(json, "protocol", traits.word);
        put(json, "ip", output.ip);
        put(json, "device", output.device);
        if (output.port != traits.port)
            put(json, "port", output.port);
        if (traits.lastUniverse > 0)
            put(json, "universe", output.universe);
        json.EndObject();
    }
    json.EndArray();
    json.EndObject();
}

std::string documentText(const Document &document) {
    rapidjson::StringBuffer text;
    rapidjson::PrettyWriter<rapidjson::StringBuffer> json(text);
    json.SetIndent(' ', 2);
    json.StartObject();
    put(json, "displayID", document.displayID);
    put(json, "mode", document.mode);
    json.Key("devices");
    json.StartArray();
    for (const DeviceEntry &device : document.devices) {
        json.StartObject();
        put(json, "ip", device.ip);
        put(json, "controlVersion", device.controlVersion);
        put(json, "shapeType", device.shapeType);
        // The library's parser reads some numbers as infinite, which JSON cannot express.
        constexpr double largest = std::numeric_limits<double>::max();
        put(json, "scaleFactor", std::clamp(device.scaleFactor, -largest, largest));
        json.Key("panels");
        json.StartArray();
        for (const PanelEntry &panel : device.panels) {
            const std::string line = "{\"panelID\": " + std::to_string(panel.panelID) +
                                     ", \"centroidX\": " + std::to_string(panel.centroidX) +
                                     ", \"centroidY\": " + std::to_string(panel.centroidY) + "}";
            json.RawValue(line.data(), line.size(), rapidjson::kObjectType);
        }
        json.EndArray();
        json.EndObject();
    }
    json.EndArray();
    if (document.bridge)
        writeBridge(json, *document.bridge);
    json.EndObject();
    return text.GetString() + std::string("\n");
}

std::string describe(const std::string &path, const Problem &problem) {
    std::string text = path + ": ";
    if (problem.place.line > 0)
        text += lights::format("line %zu, column %zu: ", problem.place.line, problem.place.column);
    if (!problem.pointer.empty())
        text += shownPointer(problem.pointer) + ": ";
    return text + problem.message;
}

} // namespace config
