// Shared by the tests of the whole program.
#pragma once

#include "tests/support/expectations.h"
#include "tests/support/files.h"
#include "tests/support/lightReceiver.h"
#include "tests/support/process.h"

#include <csignal>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace test {

// Documents have one device with the panels 1 to `panels`, which lightbridge listens for at `ip`
// with the wide layout.
class BridgeTest : public testing::Test {
protected:
    // Writes a document and returns its path. The outputs are the insides of objects; `more` is
    // further members of the bridge, each after a comma.
    std::string writeConfig(const std::string &ip, int panels,
                            const std::vector<std::string> &outputs,
                            const std::string &more = "") const {
        std::string text =
            R"({"displayID": 1, "mode": 0, "devices": [{"ip": ")" + ip +
            R"(", "controlVersion": 2, "shapeType": 0, "scaleFactor": 1, "panels": [)";
        for (int i = 1; i <= panels; ++i)
            text += (i > 1 ? ", " : "") + (R"({"panelID": )" + std::to_string(i)) +
                    R"(, "centroidX": 100, "centroidY": 100})";
        text += R"(]}], "lightbridge": {"outputs": [)";
        for (std::size_t i = 0; i < outputs.size(); ++i)
            text += (i > 0 ? ", {" : "{") + outputs[i] + "}";
        return folder.write("wall.json", text + "]" + more + "}}");
    }

    static std::string ddp(const LightReceiver &light, const std::string &more = "") {
        return R"("protocol": "ddp", "ip": "127.0.47.1", "device": 0, "port": )" +
               std::to_string(light.port()) + more;
    }

    static Process start(std::vector<std::string> arguments, const LaunchOptions &options = {}) {
        arguments.insert(arguments.begin(), LIGHTBRIDGE_PROGRAM);
        return Process(arguments, options);
    }

    static ProcessResult run(const std::vector<std::string> &arguments,
                             const LaunchOptions &options = {}) {
        return start(arguments, options).finish();
    }

    // Ends the program by a signal; expects exit status 0.
    static void end(Process &bridge, int signal = SIGTERM) {
        bridge.signal(signal);
        EXPECT_EQ(bridge.finish().status, 0) << bridge.out() << bridge.err();
    }

    Folder folder;
};

} // namespace test
