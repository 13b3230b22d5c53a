#include "tests/support/lightReceiver.h"
#include "tests/support/process.h"
#include "tests/tools/panelwall/wallSetup.h"

#include <gtest/gtest.h>

using namespace test;

static void expectFailure(std::vector<std::string> arguments, int status,
                          const std::vector<std::string> &texts) {
    arguments.insert(arguments.begin(), PANELWALL_PROGRAM);
    Process wall(arguments);
    EXPECT_EQ(wall.finish().status, status) << wall.out();
    for (const std::string &text : texts)
        EXPECT_NE(wall.err().find(text), std::string::npos) << text << "\nis not in\n"
                                                            << wall.err();
}

TEST(PanelwallErrors, CommandLine) {
    const Folder folder;
    const auto config =
        folder.write("wall.json", documentText({deviceText("127.0.41.20", 2, {{1, 1, 1}})}));
    expectFailure({}, 2, {"CONFIG"});
    expectFailure({config, "--size", "1920"}, 2, {"not a size such as 1920x1080: 1920"});
    for (const char *size : {"0x5", "5x0", "5x", "x5", "-5x5", "5x5x5", "40000x5", "5x5 "})
        expectFailure({config, "--size", size}, 2, {"--size"});
    for (const char *seconds : {"-1", "0", "nan", "inf", "soon"})
        expectFailure({config, "--seconds", seconds}, 2, {"--seconds"});
    for (const char *unit : {"-1", "60001", "0.5", "fast"})
        expectFailure({config, "--transition-unit", unit}, 2, {"--transition-unit"});
    expectFailure({config, "--unknown"}, 2, {"--unknown"});
}

TEST(PanelwallErrors, Help) {
    Process wall({PANELWALL_PROGRAM, "--help"});
    EXPECT_EQ(wall.finish().status, 0);
    for (const char *text :
         {"Exit statuses:", "SIGUSR1", "--snapshot FILE", "--size WxH", "--transition-unit MS"})
        EXPECT_NE(wall.out().find(text), std::string::npos) << text;
}

TEST(PanelwallErrors, Version) {
    Process wall({PANELWALL_PROGRAM, "--version"});
    EXPECT_EQ(wall.finish().status, 0);
    EXPECT_EQ(wall.out(), "panelwall " PROJECT_VERSION "\n");
    EXPECT_EQ(wall.err(), "");
}

TEST(PanelwallErrors, Files) {
    const Folder folder;
    const auto missing = folder.file("missing.json");
    expectFailure({missing}, 3, {missing + ": cannot be read: No such file"});
    expectFailure({folder.file("")}, 3, {"cannot be read"});
    const auto config =
        folder.write("wall.json", documentText({deviceText("127.0.41.21", 2, {{1, 1, 1}})}));
    expectFailure({config, "--snapshot", folder.file("missing/wall.png")}, 3,
                  {"a picture cannot be written here"});
}

TEST(PanelwallErrors, Documents) {
    const Folder folder;
    expectFailure({folder.write("bad.json", "{")}, 4, {"bad.json"});
    expectFailure({folder.write("empty.json", "{}")}, 4, {"/displayID", "/mode", "/devices"});
    expectFailure({folder.write("none.json", documentText({}))}, 4,
                  {"/devices: there is no device to listen for"});
}

TEST(PanelwallErrors, Addresses) {
    const Folder folder;
    const auto config = folder.write(
        "wall.json",
        documentText({deviceText("127.0.41.22", 1, {}), deviceText("192.168.1.9", 1, {}),
                      deviceText("lamp", 2, {}), deviceText("127.0.41.22", 1, {})}));
    expectFailure(
        {config}, 5,
        {"/devices/1/ip: device 1 at \"192.168.1.9\", UDP port 60221: not a loopback address",
         "/devices/2/ip: device 2 at \"lamp\", UDP port 60222: the address does not parse",
         "/devices/3/ip: device 3 at \"127.0.41.22\", UDP port 60221: device 0 has the same "
         "address and port"});
}

TEST(PanelwallErrors, PortInUse) {
    const LightReceiver holder("127.0.41.23", 60222);
    const Folder folder;
    const auto config = folder.write("wall.json", documentText({deviceText("127.0.41.23", 1, {}),
                                                                deviceText("127.0.41.23", 2, {})}));
    expectFailure({config}, 6,
                  {"/devices/1: device 1 at \"127.0.41.23\", UDP port 60222: the port is in use"});
}
