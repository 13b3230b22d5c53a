#include "tests/tools/config/libraryReading.h"

namespace {

struct AssertionFailed {};

} // namespace

// A private copy of the JSON library. It throws where the original ends the process.
#define RAPIDJSON_NAMESPACE assertingJson
#define RAPIDJSON_NAMESPACE_BEGIN namespace assertingJson {
#define RAPIDJSON_NAMESPACE_END }
#define RAPIDJSON_ASSERT(condition) ((condition) ? static_cast<void>(0) : throw AssertionFailed())
#include <rapidjson/document.h>

namespace test {

static void readEveryMember(const assertingJson::Document &document) {
    document["displayID"].GetInt();
    document["mode"].GetInt();
    const auto &devices = document["devices"];
    RAPIDJSON_ASSERT(devices.IsArray());
    for (assertingJson::SizeType i = 0; i < devices.Size(); ++i) {
        const auto &device = devices[i];
        const auto &panels = device["panels"];
        RAPIDJSON_ASSERT(panels.IsArray());
        device["scaleFactor"].GetDouble();
        device["shapeType"].GetInt();
        for (assertingJson::SizeType j = 0; j < panels.Size(); ++j)
            for (const char *member : {"panelID", "centroidX", "centroidY"})
                panels[j][member].GetInt();
        device["ip"].GetString();
        device["controlVersion"].GetInt();
    }
}

bool libraryReads(const std::string &text) {
    try {
        assertingJson::Document document;
        if (document.Parse(text.c_str()).HasParseError())
            return false;
        readEveryMember(document);
        return true;
    } catch (const AssertionFailed &) {
        return false;
    }
}

} // namespace test
