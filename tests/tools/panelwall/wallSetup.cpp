#include "tests/tools/panelwall/wallSetup.h"

namespace test {

std::string deviceText(const std::string &ip, int controlVersion,
                       const std::vector<std::vector<int>> &panels) {
    std::string list;
    for (const auto &panel : panels)
        list += std::string(list.empty() ? "" : ",") + "{\"panelID\":" + std::to_string(panel[0]) +
                ",\"centroidX\":" + std::to_string(panel[1]) +
                ",\"centroidY\":" + std::to_string(panel[2]) + "}";
    return "{\"ip\":\"" + ip + "\",\"controlVersion\":" + std::to_string(controlVersion) +
           ",\"shapeType\":0,\"scaleFactor\":1,\"panels\":[" + list + "]}";
}

std::string documentText(const std::vector<std::string> &devices, int mode) {
    std::string list;
    for (const std::string &device : devices)
        list += (list.empty() ? "" : ",") + device;
    return "{\"displayID\":1,\"mode\":" + std::to_string(mode) + ",\"devices\":[" + list + "]}";
}

Process WallTest::start(std::vector<std::string> arguments, const LaunchOptions &options) {
    arguments.insert(arguments.begin(), PANELWALL_PROGRAM);
    return Process(arguments, options);
}

ProcessResult WallTest::runWithoutNetwork(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"unshare", "--net", "--map-root-user", PANELWALL_PROGRAM});
    return Process(arguments).finish();
}

ProcessResult WallTest::run(const std::vector<std::string> &arguments) {
    return start(arguments).finish();
}

void WallTest::end(Process &wall, int signal) {
    wall.signal(signal);
    EXPECT_EQ(wall.finish().status, 0) << wall.out() << wall.err();
}

std::string WallTest::writeConfig(const std::vector<std::string> &devices, int mode) const {
    return folder.write("wall.json", documentText(devices, mode));
}

std::string WallTest::writeOnePanel(const std::string &ip, int mode) const {
    return writeConfig({deviceText(ip, 2, {{1, 100, 100}})}, mode);
}

} // namespace test
