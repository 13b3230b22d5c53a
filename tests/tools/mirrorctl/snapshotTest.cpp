#include "tests/support/lightReceiver.h"
#include "tests/support/virtualScreen.h"
#include "tests/tools/mirrorctl/lightsFile.h"
#include "tests/tools/mirrorctl/program.h"

#include <gtest/gtest.h>

using test::contains;
using test::Ending;
using test::LightReceiver;
using test::LightsFile;
using test::lightsText;
using test::mirrorctl;

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

// Red at the left, green at the right, blue below.
void drawThreeColours(test::VirtualScreen &screen) {
    screen.fill(0x0000FF);
    screen.fillRect(0, 0, 300, 200, 0xFF0000);
    screen.fillRect(300, 0, 340, 200, 0x00FF00);
}

Ending snapshot(const test::VirtualScreen &screen, const std::string &text,
                const std::vector<std::string> &arguments = {}) {
    std::vector<std::string> words = {"snapshot", "-"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return mirrorctl(words, {{"DISPLAY", screen.display()}}, text);
}

} // namespace

TEST(MirrorctlSnapshot, ListsWhatEachDeviceWasSent) {
    test::VirtualScreen screen(640, 480);
    drawThreeColours(screen);
    const std::string text = threeDevices(test::onlyDisplay(screen.display()), "127.0.58.3", 0);
    const Ending ending = snapshot(screen, text);
    EXPECT_EQ(ending.status, 0) << ending.err;
    EXPECT_EQ(ending.err, "");
    EXPECT_EQ(ending.out, "device  address            panel  colour\n"
                          "     0  127.0.58.31:60221     44  #ff0000\n"
                          "     0  127.0.58.31:60221      2  #00ff00\n"
                          "     1  127.0.58.32:60222    300  #0000ff\n"
                          "     2  127.0.58.33:60222      -  no panels\n");
    const Ending json = snapshot(screen, text, {"--json"});
    EXPECT_EQ(json.status, 0) << json.err;
    EXPECT_EQ(json.out, R"({"numDevices":3,"devices":[)"
                        R"({"ip":"127.0.58.31","animData":"2 44 1 255 0 0 0 5 2 1 0 255 0 0 5"},)"
                        R"({"ip":"127.0.58.32","animData":"1 300 1 0 0 255 0 5"},)"
                        R"({"ip":"127.0.58.33","animData":"0 "}]})"
                        "\n");
}

TEST(MirrorctlSnapshot, LightsTheDevices) {
    test::VirtualScreen screen(640, 480);
    screen.fill(0xFF0000);
    LightReceiver light("127.0.58.40", 60222);
    const Ending ending =
        snapshot(screen, lightsText(test::onlyDisplay(screen.display()), "127.0.58.40"));
    EXPECT_EQ(ending.status, 0) << ending.err;
    std::optional<test::Datagram> last;
    while (const auto datagram = light.next(std::chrono::milliseconds(0)))
        last = datagram;
    EXPECT_EQ(last, (test::Datagram{0, 1, 0, 17, 255, 0, 0, 0, 0, 1}));
}

TEST(MirrorctlSnapshot, ShowsTheFirstColourOfMeltAndFade) {
    test::VirtualScreen screen(640, 480);
    screen.fill(0xFF0000);
    const auto display = test::onlyDisplay(screen.display());
    const std::string wanted = "device  address            panel  colour\n"
                               "     0  127.0.58.41:60222     17  #ff0000\n";
    for (const int mode : {1, 2}) {
        const Ending ending = snapshot(screen, lightsText(display, "127.0.58.41", mode));
        EXPECT_EQ(ending.status, 0) << ending.err;
        EXPECT_EQ(ending.out, wanted);
    }
}

TEST(MirrorctlSnapshot, WaitsForTheScreenToChange) {
    test::VirtualScreen screen(640, 480);
    const LightsFile file(lightsText(test::onlyDisplay(screen.display()), "127.0.58.42", 2));
    // Nothing is sent before the colour comes, however late that is.
    test::Program program({"snapshot", file.path(), "--seconds", "60"},
                          {{"DISPLAY", screen.display()}});
    screen.fill(0xFF0000);
    const Ending ending = program.finish();
    EXPECT_EQ(ending.status, 0) << ending.err;
    EXPECT_TRUE(contains(ending.out, "  #ff0000\n")) << ending.out;
}

TEST(MirrorctlSnapshot, SaysWhyNothingCame) {
    const test::VirtualScreen screen(640, 480);
    const auto display = test::onlyDisplay(screen.display());
    const std::string names[] = {"melt", "fade"};
    for (const int mode : {1, 2}) {
        const Ending ending =
            snapshot(screen, lightsText(display, "127.0.58.43", mode), {"--seconds", "0.1"});
        EXPECT_EQ(ending.status, 75);
        EXPECT_EQ(ending.out, "");
        // The library's second may last longer on a busy machine.
        EXPECT_TRUE(contains(ending.err, "No snapshot: nothing was sent in " + names[mode - 1] +
                                             " mode within "))
            << ending.err;
        EXPECT_TRUE(contains(ending.err, "only when the screen's dominant colour changes"));
    }
}

TEST(MirrorctlSnapshot, BelievesABlackScreenInTheEnd) {
    const test::VirtualScreen screen(640, 480);
    const auto display = test::onlyDisplay(screen.display());
    for (const int mode : {0, 3}) {
        const Ending ending = snapshot(screen, lightsText(display, "127.0.58.44", mode));
        EXPECT_EQ(ending.status, 0) << ending.err;
        EXPECT_TRUE(contains(ending.out, "     17  #000000\n")) << ending.out;
    }
}

TEST(MirrorctlSnapshot, WaitsForAFrameThatComesLate) {
    test::VirtualScreen screen(640, 480);
    screen.fill(0xFF0000);
    const auto display = test::onlyDisplay(screen.display());
    for (const int mode : {0, 3}) {
        const Ending ending = mirrorctl(
            {"snapshot", "-", "--seconds", "30"},
            {{"DISPLAY", screen.display()}, {"LD_PRELOAD", LATE_FRAMES}, {"LATE_FRAMES", "2500"}},
            lightsText(display, "127.0.58.45", mode));
        EXPECT_EQ(ending.status, 0) << ending.err;
        EXPECT_TRUE(contains(ending.out, "     17  #ff0000\n")) << ending.out;
    }
}

TEST(MirrorctlSnapshot, ShowsColoursOfThePalette) {
    test::VirtualScreen screen(640, 480);
    screen.fill(0xFF0000);
    const std::string text = threeDevices(test::onlyDisplay(screen.display()), "127.0.58.5", 3);
    const Ending ending = snapshot(screen, text, {"--seconds", "30"});
    EXPECT_EQ(ending.status, 0) << ending.err;
    // Which panels were due is a matter of chance.
    EXPECT_TRUE(contains(ending.out, "#ff0000\n")) << ending.out;
    EXPECT_FALSE(contains(ending.out, "#000000")) << ending.out;
    EXPECT_TRUE(contains(ending.out, "     2  127.0.58.53:60222      -  nothing in this frame\n"))
        << ending.out;
    for (const char *device : {"     0  127.0.58.51:60221", "     1  127.0.58.52:60222"})
        EXPECT_TRUE(contains(ending.out, device)) << ending.out;
}

TEST(MirrorctlSnapshot, ShowsSwatchesOnATerminal) {
    test::VirtualScreen screen(640, 480);
    screen.use();
    screen.fill(0xFF8000);
    const LightsFile file(lightsText(test::onlyDisplay(screen.display()), "127.0.58.45"));
    const Ending ending =
        test::Process({MIRRORCTL, "snapshot", file.path()}, {.terminal = test::TerminalSize()})
            .finish();
    EXPECT_EQ(ending.status, 0) << ending.out;
    EXPECT_EQ(ending.out, "device  address            panel  colour\r\n"
                          "     0  127.0.58.45:60222     17  \x1b[48;2;255;128;0m    \x1b[0m "
                          "#ff8000\r\n");
}
