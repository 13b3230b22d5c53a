#include "tests/tools/panelwall/systemText.h"
#include "tests/tools/panelwall/wallSetup.h"

#include <cerrno>

using namespace test;
using PanelwallErrors = WallTest;

TEST_F(PanelwallErrors, CommandLine) {
    const auto config = writeOnePanel("127.0.41.20");
    expectErrors(run({}), 2, {"CONFIG"});
    expectErrors(run({config, "--size", "1920"}), 2, {"not a size such as 1920x1080: 1920"});
    for (const char *size : {"0x5", "5x0", "5x", "x5", "-5x5", "5x5x5", "40000x5", "5x5 "})
        expectErrors(run({config, "--size", size}), 2, {"--size"});
    for (const char *seconds : {"-1", "0", "nan", "inf", "soon"})
        expectErrors(run({config, "--seconds", seconds}), 2, {"--seconds"});
    for (const char *unit : {"-1", "60001", "0.5", "fast"})
        expectErrors(run({config, "--transition-unit", unit}), 2, {"--transition-unit"});
    expectErrors(run({config, "--unknown"}), 2, {"--unknown"});
}

TEST_F(PanelwallErrors, Help) {
    expectOutput(
        run({"--help"}), 0,
        {"Exit statuses:", "SIGUSR1", "--snapshot FILE", "--size WxH", "--transition-unit MS"});
}

TEST_F(PanelwallErrors, Version) {
    EXPECT_EQ(run({"--version"}), (ProcessResult{0, "panelwall " PROJECT_VERSION "\n", ""}));
}

TEST_F(PanelwallErrors, Files) {
    const auto missing = folder.file("missing.json");
    expectErrors(run({missing}), 3, {missing + ": cannot be read: No such file"});
    expectErrors(run({folder.file("")}), 3, {"cannot be read"});
    expectErrors(run({writeOnePanel("127.0.41.21"), "--snapshot", folder.file("missing/wall.png")}),
                 3, {"a picture cannot be written here"});
}

TEST_F(PanelwallErrors, Documents) {
    expectErrors(run({folder.write("bad.json", "{")}), 4, {"bad.json"});
    expectErrors(run({folder.write("empty.json", "{}")}), 4, {"/displayID", "/mode", "/devices"});
    expectErrors(run({writeConfig({})}), 4, {"/devices: there is no device to listen for"});
}

TEST_F(PanelwallErrors, Addresses) {
    const auto config =
        writeConfig({deviceText("127.0.41.22", 1, {}), deviceText("192.168.1.9", 1, {}),
                     deviceText("lamp", 2, {}), deviceText("127.0.41.22", 1, {})});
    expectErrors(
        run({config}), 5,
        {"/devices/1/ip: device 1 at \"192.168.1.9\", UDP port 60221: not a loopback address",
         "/devices/2/ip: device 2 at \"lamp\", UDP port 60222: the address does not parse",
         "/devices/3/ip: device 3 at \"127.0.41.22\", UDP port 60221: device 0 has the same "
         "address and port"});
}

TEST_F(PanelwallErrors, AddressThatThisMachineLacks) {
    const ProcessResult result = runWithoutNetwork({writeConfig({deviceText("::1", 1, {})})});
    if (contains(result.err, "unshare"))
        GTEST_SKIP() << result.err;
    expectErrors(
        result, 6,
        {"/devices/0: device 0 at \"::1\", UDP port 60221: this machine has no such address "
         "(" +
         errorText(EADDRNOTAVAIL) + "); add it with \"" + loopbackAliasText("::1") +
         "\", or take one that it has, such as 127.0.0.1"});
}

TEST_F(PanelwallErrors, PortInUse) {
    const LightReceiver holder("127.0.41.23", 60222);
    const auto config =
        writeConfig({deviceText("127.0.41.23", 1, {}), deviceText("127.0.41.23", 2, {})});
    expectErrors(run({config}), 6,
                 {"/devices/1: device 1 at \"127.0.41.23\", UDP port 60222: the port is in use"});
}
