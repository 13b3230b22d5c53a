// Failures of palette and snapshot, with a library that fails on request.
#include "tests/tools/mirrorctl/mirrorSetup.h"

using test::lightsText;
using test::mirrorctl;
using test::ProcessResult;

namespace {

ProcessResult ask(const std::vector<std::string> &arguments, const std::string &function,
                  const std::string &text) {
    return mirrorctl(arguments, test::refusing(function), text);
}

ProcessResult askPalette(const std::string &function) {
    return ask({"palette", "-"}, function, lightsText(5, "127.0.58.9"));
}

ProcessResult askSnapshot(const std::string &function, int mode = 0) {
    return ask({"snapshot", "-", "--seconds", "0.1"}, function, lightsText(5, "127.0.58.9", mode));
}

void expectFailure(const ProcessResult &result, int status, const std::string &message) {
    EXPECT_EQ(result.out, "");
    test::expectErrors(result, status, {message});
}

} // namespace

TEST(MirrorctlNoAnswer, DocumentsFilesAndDisplaysAreChecked) {
    for (const char *command : {"palette", "snapshot"}) {
        expectFailure(mirrorctl({command, "/no/such.json"}), 66, "/no/such.json: cannot be read");
        expectFailure(mirrorctl({command, "-"}, {}, "{"), 65, "standard input: line 1, column 2");
        expectFailure(mirrorctl({command, "-"}, {}, lightsText(5, "127.0.58.9", 4)), 65, "/mode");
        expectFailure(ask({command, "-"}, "nothing", lightsText(6, "127.0.58.9")), 69,
                      "standard input: line 1, column 2: /displayID: ");
    }
    expectFailure(ask({"snapshot", "-"}, "nothing", lightsText(5, "a lamp")), 68, "/devices/0/ip");
}

TEST(MirrorctlNoAnswer, RefusalsOfTheLibraryAreTold) {
    for (const char *command : {"palette", "snapshot"}) {
        const auto refused = [&](const std::string &function) {
            return ask({command, "-"}, function, lightsText(5, "127.0.58.9"));
        };
        expectFailure(refused("setMirrorConfig"), 77, "Capturing display 5 was refused.\n");
        expectFailure(refused("startMirror"), 71, "Mirroring could not be started.\n");
        expectFailure(refused("stopMirror"), 70, "Mirroring could not be stopped properly.\n");
    }
    expectFailure(askPalette("getPalette"), 70, "the library could not make a palette\n");
    expectFailure(askPalette("sense"), 70, "the library's list of displays is not understood\n");
    expectFailure(askSnapshot("getSizeOfStreamFrameJson"), 70, "could not make a text");
    expectFailure(askSnapshot("getStreamFrameJson"), 70, "could not hand out the frames sent\n");
}

TEST(MirrorctlNoAnswer, TextsThatAreNotUnderstoodAreRefused) {
    expectFailure(askPalette("palette sense"), 70, "the library's palette is not understood\n");
    expectFailure(askSnapshot("frame sense"), 70, "text of the frames sent is not understood\n");
}

TEST(MirrorctlNoAnswer, RunsThatSendNothingAreGivenUp) {
    expectFailure(askPalette("captureCurrentStreamFrames"), 75, "No palette: mirroring ended");
    expectFailure(askSnapshot("captureCurrentStreamFrames"), 75, "mirroring ended by itself");
    expectFailure(askSnapshot("captureCurrentStreamFrames", 3), 75, "more time with --seconds");
}

TEST(MirrorctlNoAnswer, ControlCEndsTheWait) {
    expectFailure(askPalette("interruption"), 75, "No palette: Interrupt.\n");
    expectFailure(
        ask({"snapshot", "-", "--seconds", "3600"}, "interruption", lightsText(5, "127.0.58.9", 2)),
        75, "No snapshot: Interrupt.\n");
}

TEST(MirrorctlNoAnswer, BlackIsNoAnswerUntilTheScreenWasSeen) {
    EXPECT_EQ(askPalette("promptness").out, "{\"palette\":[{\"R\":255,\"G\":255,\"B\":0}]}\n");
    for (const int mode : {0, 3})
        test::expectOutput(ask({"snapshot", "-"}, "promptness", lightsText(5, "127.0.58.9", mode)),
                           0, {"     17  #ffff00\n"});
}

TEST(MirrorctlNoAnswer, LightIsBelievedAlthoughBlackIsDueToBe) {
    test::expectOutput(ask({"snapshot", "-"}, "initiative", lightsText(5, "127.0.58.9")), 0,
                       {"     17  #ffff00\n"});
}

TEST(MirrorctlNoAnswer, AFrameThatShowsTheScreenToSomePanelsIsNoAnswer) {
    const ProcessResult result = ask({"snapshot", "-"}, "wholeness",
                                     R"({"displayID": 5, "mode": 0, "devices": [{"ip": "127.0.58.9",
                                  "controlVersion": 2, "shapeType": 0, "scaleFactor": 1,
                                  "panels": [{"panelID": 17, "centroidX": 100, "centroidY": 100},
                                             {"panelID": 18, "centroidX": 200, "centroidY": 100}]}]})");
    test::expectOutput(result, 0, {"     17  #ffff00\n", "     18  #ffff00\n"});
}

// On standard output, the library's messages would make the result unreadable for programs.
TEST(MirrorctlNoAnswer, LibraryMessagesGoToStandardError) {
    EXPECT_EQ(askPalette("silence"),
              (ProcessResult{0, "{\"palette\":[{\"R\":255,\"G\":255,\"B\":0}]}\n",
                             "The library talks.\n"}));
    EXPECT_EQ(ask({"snapshot", "-", "--json"}, "silence", lightsText(5, "127.0.58.9")),
              (ProcessResult{0,
                             R"({"numDevices":1,"devices":[{"ip":"127.0.58.9",)"
                             R"("animData":"1 17 1 255 255 0 0 5"}]})"
                             "\n",
                             "The library talks.\n"}));
}
