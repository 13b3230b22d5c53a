#include "tools/mirrorctl/run/frameWitness.h"

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace mirrorctl {

static constexpr std::int32_t paletteMode = 3;

FrameWitness::FrameWitness(const config::Document &document)
    : ear(document), panels(document.mode == paletteMode ? 1 : 0) {}

std::string FrameWitness::joined(const std::string &text) const {
    rapidjson::Document tree;
    tree.Parse(text.c_str());
    auto &allocator = tree.GetAllocator();
    rapidjson::Value device(rapidjson::kObjectType);
    device.AddMember("ip", rapidjson::Value(ear.address().c_str(), allocator), allocator);
    device.AddMember("controlVersion", ear.controlVersion(), allocator);
    device.AddMember("shapeType", 0, allocator);
    device.AddMember("scaleFactor", 1, allocator);
    rapidjson::Value list(rapidjson::kArrayType);
    for (std::size_t i = 0; i < panels; ++i) {
        rapidjson::Value panel(rapidjson::kObjectType);
        for (const char *name : {"panelID", "centroidX", "centroidY"})
            panel.AddMember(rapidjson::StringRef(name), 0, allocator);
        list.PushBack(panel, allocator);
    }
    device.AddMember("panels", list, allocator);
    tree["devices"].PushBack(device, allocator);
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    tree.Accept(writer);
    return buffer.GetString();
}

void FrameWitness::read() {
    const std::size_t expected = ear.controlVersion() == 1 ? 1 + 7 * panels : 2 + 8 * panels;
    unsigned char bytes[64];
    std::size_t size = 0;
    double time = 0.0;
    while (ear.next(bytes, sizeof bytes, size, time))
        if (size == expected) // anybody on this machine can send here
            frames.add(time);
}

} // namespace mirrorctl
