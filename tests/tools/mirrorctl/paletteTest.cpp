#include "tests/support/lightReceiver.h"
#include "tests/support/virtualScreen.h"
#include "tests/tools/mirrorctl/lightsFile.h"
#include "tests/tools/mirrorctl/program.h"

#include <gtest/gtest.h>
#include <optional>
#include <stdexcept>

using test::Ending;
using test::LightReceiver;
using test::LightsFile;
using test::lightsText;
using test::mirrorctl;

namespace {

// Red in front, as the lower hue of two equal ones; blue is in the bucket of 238.5 degrees.
const std::string redAndBlue = R"({"palette":[{"R":255,"G":0,"B":0},{"R":0,"G":6,"B":255}]})";

// The left part in red, somewhat more than a half.
void drawRedAndBlue(test::VirtualScreen &screen) {
    screen.fill(0x0000FF);
    screen.fillRect(0, 0, 340, 480, 0xFF0000);
}

// What a terminal shows of `command`, which must end with 0.
std::string onTerminal(const std::vector<std::string> &command) {
    const Ending ending = test::Process(command, {.terminal = test::TerminalSize()}).finish();
    EXPECT_EQ(ending.status, 0) << ending.out;
    return ending.out;
}

} // namespace

TEST(MirrorctlPalette, PrintsTheLibrarysTextOffATerminal) {
    test::VirtualScreen screen(640, 480);
    drawRedAndBlue(screen);
    const LightsFile file(lightsText(test::onlyDisplay(screen.display()), "127.0.58.20", 2));
    for (const auto &arguments : {std::vector<std::string>{"palette", file.path()},
                                  std::vector<std::string>{"palette", file.path(), "--json"}}) {
        const Ending ending = mirrorctl(arguments, {{"DISPLAY", screen.display()}});
        EXPECT_EQ(ending.status, 0) << ending.err;
        EXPECT_EQ(ending.out, redAndBlue + "\n");
        EXPECT_EQ(ending.err, "");
    }
}

TEST(MirrorctlPalette, LeavesTheLightsAlone) {
    test::VirtualScreen screen(640, 480);
    drawRedAndBlue(screen);
    LightReceiver light("127.0.58.21", 60222);
    const auto display = test::onlyDisplay(screen.display());
    for (int mode = 0; mode < 4; ++mode) {
        const LightsFile file(lightsText(display, "127.0.58.21", mode));
        const Ending ending = mirrorctl({"palette", file.path()}, {{"DISPLAY", screen.display()}});
        EXPECT_EQ(ending.out, redAndBlue + "\n") << ending.err;
    }
    // Loopback delivers before a send returns, so whatever was sent is here.
    EXPECT_FALSE(light.next(std::chrono::milliseconds(0)));
}

TEST(MirrorctlPalette, SendsNothingToWhoeverListensHere) {
    std::optional<LightReceiver> bystander;
    try {
        bystander.emplace("127.0.0.1", 60222);
    } catch (const std::runtime_error &error) {
        GTEST_SKIP() << "another program has the port: " << error.what();
    }
    test::VirtualScreen screen(640, 480);
    drawRedAndBlue(screen);
    const LightsFile file(lightsText(test::onlyDisplay(screen.display()), "127.0.58.24"));
    const Ending ending = mirrorctl({"palette", file.path()}, {{"DISPLAY", screen.display()}});
    EXPECT_EQ(ending.out, redAndBlue + "\n") << ending.err;
    EXPECT_FALSE(bystander->next(std::chrono::milliseconds(0)));
}

TEST(MirrorctlPalette, NeedsNoLightsAtAll) {
    test::VirtualScreen screen(640, 480);
    drawRedAndBlue(screen);
    const auto display = test::onlyDisplay(screen.display());
    const std::string documents[] = {lightsText(display, "a lamp"),
                                     R"({"displayID": )" + std::to_string(display) +
                                         R"(, "mode": 0, "devices": []})"};
    for (const std::string &document : documents) {
        const Ending ending =
            mirrorctl({"palette", "-"}, {{"DISPLAY", screen.display()}}, document);
        EXPECT_EQ(ending.status, 0) << ending.err;
        EXPECT_EQ(ending.out, redAndBlue + "\n");
    }
}

TEST(MirrorctlPalette, BelievesABlackScreenInTheEnd) {
    const test::VirtualScreen screen(640, 480);
    const LightsFile file(lightsText(test::onlyDisplay(screen.display()), "127.0.58.22"));
    const Ending ending = mirrorctl({"palette", file.path()}, {{"DISPLAY", screen.display()}});
    EXPECT_EQ(ending.status, 0) << ending.err;
    EXPECT_EQ(ending.out, "{\"palette\":[{\"R\":0,\"G\":0,\"B\":0}]}\n");
}

TEST(MirrorctlPalette, WaitsForAFrameThatComesLate) {
    test::VirtualScreen screen(640, 480);
    drawRedAndBlue(screen);
    const Ending ending = mirrorctl(
        {"palette", "-"},
        {{"DISPLAY", screen.display()}, {"LD_PRELOAD", LATE_FRAMES}, {"LATE_FRAMES", "2500"}},
        lightsText(test::onlyDisplay(screen.display()), "127.0.58.25"));
    EXPECT_EQ(ending.status, 0) << ending.err;
    EXPECT_EQ(ending.out, redAndBlue + "\n");
}

TEST(MirrorctlPalette, ShowsSwatchesOnATerminal) {
    test::VirtualScreen screen(640, 480);
    screen.use();
    drawRedAndBlue(screen);
    const LightsFile file(lightsText(test::onlyDisplay(screen.display()), "127.0.58.23"));
    EXPECT_EQ(onTerminal({MIRRORCTL, "palette", file.path()}),
              "      hex        R    G    B\r\n"
              "\x1b[48;2;255;0;0m    \x1b[0m  #ff0000  255    0    0\r\n"
              "\x1b[48;2;0;6;255m    \x1b[0m  #0006ff    0    6  255\r\n");
    EXPECT_EQ(onTerminal({MIRRORCTL, "palette", file.path(), "--json"}), redAndBlue + "\r\n");
    EXPECT_EQ(onTerminal({"/usr/bin/env", "TERM=dumb", MIRRORCTL, "palette", file.path()}),
              "hex        R    G    B\r\n"
              "#ff0000  255    0    0\r\n"
              "#0006ff    0    6  255\r\n");
}
