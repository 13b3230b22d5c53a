#include "tests/tools/mirrorctl/lightsFile.h"

#include "tests/tools/mirrorctl/program.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <rapidjson/document.h>
#include <stdexcept>
#include <unistd.h>

namespace test {

std::string lightsText(std::uint32_t displayID, const std::string &ip, int mode) {
    return R"({"displayID": )" + std::to_string(displayID) + R"(, "mode": )" +
           std::to_string(mode) + R"(, "devices": [{"ip": ")" + ip +
           R"(", "controlVersion": 2, "shapeType": 0, "scaleFactor": 1,
               "panels": [{"panelID": 17, "centroidX": 100, "centroidY": 100}]}]})";
}

testing::AssertionResult receives(LightReceiver &light, const Datagram &wanted) {
    for (int i = 0; i < 500; ++i) {
        const auto datagram = light.next();
        if (!datagram)
            return testing::AssertionFailure() << "silence after " << i << " datagrams";
        if (*datagram == wanted)
            return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << "only other datagrams";
}

std::uint32_t onlyDisplay(const std::string &server) {
    const Ending ending = mirrorctl({"displays", "--json"}, {{"DISPLAY", server}});
    rapidjson::Document tree;
    tree.Parse(ending.out.c_str());
    if (ending.status != 0 || tree.HasParseError() || tree["displays"].Size() != 1)
        throw std::runtime_error("not one display: " + ending.out + ending.err);
    return tree["displays"][0]["displayID"].GetUint();
}

LightsFile::LightsFile(const std::string &text) {
    const auto pattern = std::filesystem::temp_directory_path() / "lights.XXXXXX";
    name = pattern.string();
    const int fd = mkstemp(name.data());
    if (fd < 0)
        throw std::runtime_error("no scratch file");
    close(fd);
    std::ofstream(name, std::ios::binary) << text;
}

LightsFile::~LightsFile() {
    std::filesystem::remove(name);
}

} // namespace test
