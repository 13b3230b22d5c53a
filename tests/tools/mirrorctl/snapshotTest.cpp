#include "tests/tools/mirrorctl/mirrorSetup.h"

using test::contains;
using test::LightReceiver;
using test::ProcessResult;

namespace {

// A narrow device with panels 300 and 2, a wide one with panel 300, one without panels.
std::string threeDevices(std::uint32_t displayID, const std::string &net, int mode) {
    const auto device = [&](const std::string &host, int version, const std::string &panels) {
        return R"({"ip": ")" + net + host + R"(", "controlVersion": )" + std::to_string(version) +
               R"(, "shapeType": 0, "scaleFactor": 0.5, "panels": [)" + panels + "]}";
    };
    return R"({"displayID": )" + std::to_string(displayID) + R"(, "mode": )" +
           std::to_string(mode) + R"(, "devices": [)" +
           device("1", 1,
                  R"({"panelID": 300, "centroidX": 100, "centroidY": 100},
                     {"panelID": 2, "centroidX": 500, "centroidY": 100})") +
           ", " + device("2", 2, R"({"panelID": 300, "centroidX": 100, "centroidY": 300})") + ", " +
           device("3", 2, "") + "]}";
}

class MirrorctlSnapshot : public test::ScreenTest {
protected:
    ProcessResult snapshot(const std::string &text, std::vector<std::string> options = {}) const {
        options.insert(options.begin(), {"snapshot", "-"});
        return run(options, text);
    }
};

} // namespace

TEST_F(MirrorctlSnapshot, ListsWhatEachDeviceWasSent) {
    // Red at the left, green at the right, blue below.
    screen.fill(0x0000FF);
    screen.fillRect(0, 0, 300, 200, 0xFF0000);
    screen.fillRect(300, 0, 340, 200, 0x00FF00);
    const std::string text = threeDevices(display, "127.0.58.3", 0);
    EXPECT_EQ(snapshot(text), (ProcessResult{0,
                                             "device  address            panel  colour\n"
                                             "     0  127.0.58.31:60221     44  #ff0000\n"
                                             "     0  127.0.58.31:60221      2  #00ff00\n"
                                             "     1  127.0.58.32:60222    300  #0000ff\n"
                                             "     2  127.0.58.33:60222      -  no panels\n",
                                             ""}));
    const ProcessResult json = snapshot(text, {"--json"});
    EXPECT_EQ(json.status, 0) << json.err;
    EXPECT_EQ(json.out, R"({"numDevices":3,"devices":[)"
                        R"({"ip":"127.0.58.31","animData":"2 44 1 255 0 0 0 5 2 1 0 255 0 0 5"},)"
                        R"({"ip":"127.0.58.32","animData":"1 300 1 0 0 255 0 5"},)"
                        R"({"ip":"127.0.58.33","animData":"0 "}]})"
                        "\n");
}

TEST_F(MirrorctlSnapshot, LightsTheDevices) {
    screen.fill(0xFF0000);
    LightReceiver light("127.0.58.40", 60222);
    const ProcessResult result = snapshot(lights("127.0.58.40"));
    EXPECT_EQ(result.status, 0) << result.err;
    std::optional<test::Datagram> last;
    while (const auto datagram = light.next(std::chrono::milliseconds(0)))
        last = datagram;
    EXPECT_EQ(last, test::redPanel);
}

TEST_F(MirrorctlSnapshot, ShowsTheFirstColourOfMeltAndFade) {
    screen.fill(0xFF0000);
    const std::string wanted = "device  address            panel  colour\n"
                               "     0  127.0.58.41:60222     17  #ff0000\n";
    for (const int mode : {1, 2}) {
        const ProcessResult result = snapshot(lights("127.0.58.41", mode));
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(result.out, wanted);
    }
}

TEST_F(MirrorctlSnapshot, WaitsForTheScreenToChange) {
    // Nothing is sent until the colour appears, however late that is.
    test::Process program =
        start({"snapshot", "-", "--seconds", "60"}, {.input = lights("127.0.58.42", 2)});
    screen.fill(0xFF0000);
    test::expectOutput(program.finish(), 0, {"  #ff0000\n"});
}

TEST_F(MirrorctlSnapshot, SaysWhyNothingCame) {
    const std::string names[] = {"melt", "fade"};
    for (const int mode : {1, 2}) {
        const ProcessResult result = snapshot(lights("127.0.58.43", mode), {"--seconds", "0.1"});
        EXPECT_EQ(result.out, "");
        // The library's wait of one second may take longer on a busy machine.
        test::expectErrors(result, 75,
                           {"No snapshot: nothing was sent in " + names[mode - 1] + " mode within ",
                            "only when the screen's dominant colour changes"});
    }
}

TEST_F(MirrorctlSnapshot, BelievesABlackScreenInTheEnd) {
    for (const int mode : {0, 3})
        test::expectOutput(snapshot(lights("127.0.58.44", mode)), 0, {"     17  #000000\n"});
}

TEST_F(MirrorctlSnapshot, WaitsForAFrameThatComesLate) {
    screen.fill(0xFF0000);
    for (const int mode : {0, 3}) {
        test::Process program =
            start({"snapshot", "-", "--seconds", "30"},
                  {.variables = {{"LD_PRELOAD", LATE_FRAMES}, {"LATE_FRAMES", "2500"}},
                   .input = lights("127.0.58.45", mode)});
        test::expectOutput(program.finish(), 0, {"     17  #ff0000\n"});
    }
}

TEST_F(MirrorctlSnapshot, ShowsColoursOfThePalette) {
    screen.fill(0xFF0000);
    const ProcessResult result =
        snapshot(threeDevices(display, "127.0.58.5", 3), {"--seconds", "30"});
    // Which panels this frame contains is random.
    test::expectOutput(result, 0,
                       {"#ff0000\n", "     0  127.0.58.51:60221", "     1  127.0.58.52:60222",
                        "     2  127.0.58.53:60222      -  nothing in this frame\n"});
    EXPECT_FALSE(contains(result.out, "#000000"));
}

TEST_F(MirrorctlSnapshot, ShowsSwatchesOnATerminal) {
    screen.fill(0xFF8000);
    const std::string file = folder.write("lights.json", lights("127.0.58.45"));
    const ProcessResult result =
        start({"snapshot", file}, {.terminal = test::TerminalSize()}).finish();
    EXPECT_EQ(result.status, 0) << result.out;
    EXPECT_EQ(result.out, "device  address            panel  colour\r\n"
                          "     0  127.0.58.45:60222     17  \x1b[48;2;255;128;0m    \x1b[0m "
                          "#ff8000\r\n");
}
