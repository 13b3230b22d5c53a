#include "tests/tools/mirrorctl/mirrorSetup.h"

#include <optional>
#include <stdexcept>

using test::LightReceiver;
using test::ProcessResult;

namespace {

// Red comes first, because it covers more; blue has the hue of its bucket, 238.5 degrees.
const std::string redAndBlue = R"({"palette":[{"R":255,"G":0,"B":0},{"R":0,"G":6,"B":255}]})";

class MirrorctlPalette : public test::ScreenTest {
protected:
    // Draws the left part in red, slightly more than half.
    void drawRedAndBlue() {
        screen.fill(0x0000FF);
        screen.fillRect(0, 0, 340, 480, 0xFF0000);
    }

    // The command's output on a terminal; expects exit status 0.
    std::string onTerminal(const std::vector<std::string> &arguments,
                           const test::Variables &variables = {}) const {
        const ProcessResult result =
            start(arguments, {.variables = variables, .terminal = test::TerminalSize()}).finish();
        EXPECT_EQ(result.status, 0) << result.out;
        return result.out;
    }
};

} // namespace

TEST_F(MirrorctlPalette, PrintsTheLibrarysTextOffATerminal) {
    drawRedAndBlue();
    const std::string file = folder.write("lights.json", lights("127.0.58.20", 2));
    for (const auto &arguments : {std::vector<std::string>{"palette", file},
                                  std::vector<std::string>{"palette", file, "--json"}})
        EXPECT_EQ(run(arguments), (ProcessResult{0, redAndBlue + "\n", ""}));
}

TEST_F(MirrorctlPalette, LeavesTheLightsAlone) {
    drawRedAndBlue();
    LightReceiver light("127.0.58.21", 60222);
    for (int mode = 0; mode < 4; ++mode) {
        const ProcessResult result = run({"palette", "-"}, lights("127.0.58.21", mode));
        EXPECT_EQ(result.out, redAndBlue + "\n") << result.err;
    }
    // Loopback delivers before a send returns, so everything sent has arrived.
    EXPECT_FALSE(light.next(std::chrono::milliseconds(0)));
}

TEST_F(MirrorctlPalette, SendsNothingToWhoeverListensHere) {
    std::optional<LightReceiver> bystander;
    try {
        bystander.emplace("127.0.0.1", 60222);
    } catch (const std::runtime_error &error) {
        GTEST_SKIP() << "another program has the port: " << error.what();
    }
    drawRedAndBlue();
    const ProcessResult result = run({"palette", "-"}, lights("127.0.58.24"));
    EXPECT_EQ(result.out, redAndBlue + "\n") << result.err;
    EXPECT_FALSE(bystander->next(std::chrono::milliseconds(0)));
}

TEST_F(MirrorctlPalette, NeedsNoLightsAtAll) {
    drawRedAndBlue();
    const std::string documents[] = {lights("a lamp"), R"({"displayID": )" +
                                                           std::to_string(display) +
                                                           R"(, "mode": 0, "devices": []})"};
    for (const std::string &document : documents) {
        const ProcessResult result = run({"palette", "-"}, document);
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(result.out, redAndBlue + "\n");
    }
}

TEST_F(MirrorctlPalette, BelievesABlackScreenInTheEnd) {
    const ProcessResult result = run({"palette", "-"}, lights("127.0.58.22"));
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "{\"palette\":[{\"R\":0,\"G\":0,\"B\":0}]}\n");
}

TEST_F(MirrorctlPalette, WaitsForAFrameThatComesLate) {
    drawRedAndBlue();
    const ProcessResult result =
        start({"palette", "-"},
              {.variables = {{"LD_PRELOAD", LATE_FRAMES}, {"LATE_FRAMES", "2500"}},
               .input = lights("127.0.58.25")})
            .finish();
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, redAndBlue + "\n");
}

TEST_F(MirrorctlPalette, ShowsSwatchesOnATerminal) {
    drawRedAndBlue();
    const std::string file = folder.write("lights.json", lights("127.0.58.23"));
    EXPECT_EQ(onTerminal({"palette", file}),
              "      hex        R    G    B\r\n"
              "\x1b[48;2;255;0;0m    \x1b[0m  #ff0000  255    0    0\r\n"
              "\x1b[48;2;0;6;255m    \x1b[0m  #0006ff    0    6  255\r\n");
    EXPECT_EQ(onTerminal({"palette", file, "--json"}), redAndBlue + "\r\n");
    EXPECT_EQ(onTerminal({"palette", file}, {{"TERM", "dumb"}}), "hex        R    G    B\r\n"
                                                                 "#ff0000  255    0    0\r\n"
                                                                 "#0006ff    0    6  255\r\n");
}
