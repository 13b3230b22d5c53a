// Every mode on a real screen, chosen by the document or by the command line.
#include "tests/tools/mirrorctl/mirrorSetup.h"

#include <csignal>

using test::LightReceiver;
using test::Process;
using test::ProcessResult;

namespace {

class MirrorctlRunModes : public test::ScreenTest {
protected:
    // Mirrors a red screen with `options` until red is sent to the only panel, number 17, in the
    // wide layout. Returns the transition time of that record, or -1.
    int transitionOfRed(const std::string &ip, int documentMode, std::vector<std::string> options,
                        const std::string &modeName) {
        screen.fill(0xFF0000);
        LightReceiver light(ip, 60222);
        options.insert(options.begin(), {"run", "-"});
        Process program = start(options, {.input = lights(ip, documentMode)});
        program.waitFor(" in " + modeName + " mode onto 1 device with 1 panel. Ctrl-C stops.\n");
        int transition = -1;
        for (int i = 0; i < 200 && transition < 0; ++i) {
            const auto datagram = light.next();
            if (!datagram || datagram->size() != 10)
                break;
            // Before the first picture arrives, some modes send black.
            if (test::Datagram(datagram->begin(), datagram->begin() + 8) ==
                test::Datagram{0, 1, 0, 17, 255, 0, 0, 0})
                transition = (*datagram)[8] << 8 | (*datagram)[9];
        }
        program.signal(SIGINT);
        const ProcessResult result = program.finish();
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(result.err, "");
        return transition;
    }
};

void expectBetween(int value, int least, int most) {
    EXPECT_GE(value, least);
    EXPECT_LE(value, most);
}

} // namespace

TEST_F(MirrorctlRunModes, RunsTheModeOfTheDocument) {
    EXPECT_EQ(transitionOfRed("127.0.58.10", 0, {}, "match"), 1);
    expectBetween(transitionOfRed("127.0.58.10", 1, {}, "melt"), 2, 10);
    EXPECT_EQ(transitionOfRed("127.0.58.10", 2, {}, "fade"), 5);
    expectBetween(transitionOfRed("127.0.58.10", 3, {}, "palette"), 10, 14);
}

TEST_F(MirrorctlRunModes, TakesNamesInsteadOfTheDocumentsMode) {
    EXPECT_EQ(transitionOfRed("127.0.58.11", 2, {"--mode", "match"}, "match"), 1);
    expectBetween(transitionOfRed("127.0.58.11", 0, {"--mode", "melt"}, "melt"), 2, 10);
    EXPECT_EQ(transitionOfRed("127.0.58.11", 0, {"--mode", "fade"}, "fade"), 5);
    expectBetween(transitionOfRed("127.0.58.11", 0, {"--mode", "palette"}, "palette"), 10, 14);
}

TEST_F(MirrorctlRunModes, TakesNumbersInsteadOfTheDocumentsMode) {
    EXPECT_EQ(transitionOfRed("127.0.58.12", 2, {"--mode", "0"}, "match"), 1);
    EXPECT_EQ(transitionOfRed("127.0.58.12", 3, {"--mode=2"}, "fade"), 5);
}

TEST_F(MirrorctlRunModes, MendsAModeThatDoesNotExist) {
    EXPECT_EQ(transitionOfRed("127.0.58.13", 7, {"--mode", "fade"}, "fade"), 5);
}

TEST_F(MirrorctlRunModes, DoesNotExcuseAModeThatIsMissing) {
    const std::string file = folder.write("lights.json", R"({"displayID": 5, "devices": []})");
    const ProcessResult result = run({"run", file, "--mode", "fade"});
    EXPECT_EQ(result.status, 65);
    EXPECT_TRUE(result.err.starts_with(file +
                                       ": line 1, column 1: /mode: expected an integer that fits "
                                       "32 bits, found no member of this name\n"))
        << result.err;
}
