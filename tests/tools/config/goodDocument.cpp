#include "tests/tools/config/goodDocument.h"

#include <rapidjson/pointer.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <stdexcept>

namespace test {

const char goodDocument[] = R"({
    "displayID": 7,
    "mode": 3,
    "devices": [
        {
            "ip": "127.0.40.1",
            "controlVersion": 1,
            "shapeType": 4,
            "scaleFactor": 1.5,
            "panels": [
                {"panelID": 101, "centroidX": 640, "centroidY": 360},
                {"panelID": 102, "centroidX": -50, "centroidY": 361},
                {"panelID": 103, "centroidX": 642, "centroidY": 99999}
            ]
        },
        {
            "ip": "::1",
            "controlVersion": 2,
            "shapeType": 5,
            "scaleFactor": 2,
            "panels": []
        }
    ]
})";

std::string write(const rapidjson::Document &tree) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    tree.Accept(writer);
    return buffer.GetString();
}

std::string withValue(const std::string &pointer, const std::string &value) {
    rapidjson::Document tree;
    tree.Parse(goodDocument);
    rapidjson::Document part(&tree.GetAllocator());
    part.Parse(value.c_str());
    if (part.HasParseError())
        throw std::invalid_argument("not JSON: " + value);
    rapidjson::Pointer(pointer.c_str()).Set(tree, part);
    return write(tree);
}

std::string withoutValue(const std::string &pointer) {
    rapidjson::Document tree;
    tree.Parse(goodDocument);
    if (!rapidjson::Pointer(pointer.c_str()).Erase(tree))
        throw std::invalid_argument("nothing at " + pointer);
    return write(tree);
}

} // namespace test
