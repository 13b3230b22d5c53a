#include "tools/config/readDocument.h"

namespace config {

// Null where the library would stop.
static const rapidjson::Value *member(const rapidjson::Value &object, const char *name) {
    if (!object.IsObject())
        return nullptr;
    const auto found = object.FindMember(name);
    return found == object.MemberEnd() ? nullptr : &found->value;
}

static std::int32_t integer(const rapidjson::Value &object, const char *name) {
    const auto *value = member(object, name);
    return value && value->IsInt() ? value->GetInt() : 0;
}

static double number(const rapidjson::Value &object, const char *name) {
    const auto *value = member(object, name);
    return value && value->IsNumber() ? value->GetDouble() : 0.0;
}

// Up to the first zero character, as the library keeps it.
static std::string text(const rapidjson::Value &object, const char *name) {
    const auto *value = member(object, name);
    return value && value->IsString() ? value->GetString() : "";
}

template <typename Read>
static auto elements(const rapidjson::Value &object, const char *name, Read read) {
    std::vector<decltype(read(object))> list;
    const auto *value = member(object, name);
    if (!value || !value->IsArray())
        return list;
    list.reserve(value->Size());
    for (const auto &element : value->GetArray())
        list.push_back(read(element));
    return list;
}

static PanelEntry readPanel(const rapidjson::Value &panel) {
    return {integer(panel, "panelID"), integer(panel, "centroidX"), integer(panel, "centroidY")};
}

static DeviceEntry readDevice(const rapidjson::Value &device) {
    DeviceEntry entry;
    entry.panels = elements(device, "panels", readPanel);
    entry.scaleFactor = number(device, "scaleFactor");
    entry.shapeType = integer(device, "shapeType");
    entry.ip = text(device, "ip");
    entry.controlVersion = integer(device, "controlVersion");
    return entry;
}

Document readDocument(const rapidjson::Value &root) {
    Document document;
    document.displayID = integer(root, "displayID");
    document.mode = integer(root, "mode");
    document.devices = elements(root, "devices", readDevice);
    return document;
}

} // namespace config
