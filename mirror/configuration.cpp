// Applying a configuration document.
#include "mirror/jsonMemory.h"
#include "mirror/screenMirrorMac.h"

#include <cstdio>
#include <rapidjson/document.h>

// Only RapidJSON's assertions stop a document that lacks a member or has one of the wrong type.
#ifdef NDEBUG
#error "build this file without NDEBUG: it relies on the JSON library's assertions"
#endif

namespace {

using Pool = rapidjson::MemoryPoolAllocator<JsonMemory>;
using Document = rapidjson::GenericDocument<rapidjson::UTF8<>, Pool, JsonMemory>;
using Value = Document::ValueType;

std::vector<Panel> readPanels(const Value &entries) {
    std::vector<Panel> panels;
    for (rapidjson::SizeType j = 0; j < entries.Size(); ++j) {
        Panel panel;
        panel.panelID = entries[j]["panelID"].GetInt();
        panel.centroidX = entries[j]["centroidX"].GetInt();
        panel.centroidY = entries[j]["centroidY"].GetInt();
        panel.numSamplePixels = panelSampleCount;
        panels.push_back(panel);
    }
    return panels;
}

Device readDevice(const Value &entry, const MirrorManager &manager) {
    const Value &panelEntries = entry["panels"];
    const int numPanels = static_cast<int>(panelEntries.Size());
    const double scaleFactor = entry["scaleFactor"].GetDouble();
    const int shapeType = entry["shapeType"].GetInt();
    std::vector<Panel> panels = readPanels(panelEntries);
    std::string ip = entry["ip"].GetString();
    const int controlVersion = entry["controlVersion"].GetInt();
    return Device(std::move(ip), controlVersion, shapeType, scaleFactor, std::move(panels),
                  numPanels, manager.screenWidth, manager.screenHeight, manager.bytesPerPixel);
}

} // namespace

// Host thread.
int MirrorManager::setMirrorConfig(char *json) {
    stopMirror();
    try {
        Document document;
        rapidjson::StringStream text(json);
        // The default parser recurses per level, so a deeply nested text could overflow the stack.
        document.ParseStream<rapidjson::kParseIterativeFlag>(text);
        if (document.HasParseError()) {
            std::puts("Bad json!");
            return 0;
        }
        displayID = static_cast<CGDirectDisplayID>(document["displayID"].GetInt());
        initScreen();
        if (initDisplayStream() == 0)
            return 0;
        mode = document["mode"].GetInt();
        const Value &entries = document["devices"];
        const rapidjson::SizeType count = entries.Size();
        devices.clear();
        for (rapidjson::SizeType i = 0; i < count; ++i) {
            Device device = readDevice(entries[i], *this);
            device.calculateSamplePixels();
            devices.push_back(std::move(device));
        }
        return 1;
    } catch (...) {
        std::puts("Bad config!");
        return 0;
    }
}
