#include "tests/tools/mirrorctl/mirrorSetup.h"

using test::contains;
using test::expectErrors;
using test::lightsText;
using test::mirrorctl;
using test::ProcessResult;

static ProcessResult runRefused(const std::string &text, const std::string &function) {
    return mirrorctl({"run", "-", "--seconds", "0.01"}, test::refusing(function), text);
}

TEST(MirrorctlRunFailure, NamesFilesThatCannotBeRead) {
    EXPECT_EQ(
        mirrorctl({"run", "/no/such.json"}),
        (ProcessResult{66, "", "/no/such.json: cannot be read: No such file or directory\n"}));
    EXPECT_EQ(mirrorctl({"run", "/tmp"}),
              (ProcessResult{66, "", "/tmp: cannot be read: Is a directory\n"}));
}

TEST(MirrorctlRunFailure, PrintsEveryFaultOfTheDocument) {
    const test::Folder folder;
    const std::string file =
        folder.write("a.json", R"({"displayID": 2.5, "mode": 0, "devices": [{}]})");
    const ProcessResult result = mirrorctl({"run", file});
    EXPECT_EQ(result.status, 65);
    EXPECT_EQ(result.out, "");
    const std::string expected[] = {
        "column 2: /displayID: expected an integer that fits 32 bits, found 2.5\n"
        "    To fix it: round it, to 3.\n",
        "column 43: /devices/0/panels: expected an array, found no member of this name\n"
        "    To fix it: add it, such as \"panels\": [] (the device's panels, in the order in which "
        "they are sent).\n",
        "/devices/0/scaleFactor: expected a number, found no member of this name\n",
        "/devices/0/shapeType: expected an integer that fits 32 bits, found no member of this "
        "name\n",
        "/devices/0/ip: expected a string, found no member of this name\n",
        "/devices/0/controlVersion: expected an integer that fits 32 bits, found no member of this "
        "name\n",
    };
    std::size_t at = 0;
    for (const auto &problem : expected) {
        at = result.err.find(problem, at);
        EXPECT_NE(at, std::string::npos) << problem << " in\n" << result.err;
    }
    EXPECT_TRUE(result.err.starts_with(file + ": line 1, column 2: ")) << result.err;
}

TEST(MirrorctlRunFailure, PlacesSyntaxErrors) {
    EXPECT_EQ(
        mirrorctl({"run", "-"}, {}, "{\n  \"mode\": }"),
        (ProcessResult{65, "",
                       "standard input: line 2, column 11: Invalid value.\n"
                       "    To fix it: a value is a number, a text in \"quotes\", [...], {...}, "
                       "true, false or null.\n"}));
}

TEST(MirrorctlRunFailure, RefusesModesThatDoNotExist) {
    for (const int mode : {-1, 4}) {
        const std::string message =
            "standard input: line 1, column 18: /mode: expected 0 (match), 1 (melt), 2 (fade) or 3 "
            "(palette), found " +
            std::to_string(mode) +
            "; a run in any other mode ends at once\n    To fix it: choose one of these four.\n";
        EXPECT_EQ(mirrorctl({"run", "-"}, {}, lightsText(5, "127.0.40.1", mode)),
                  (ProcessResult{65, "", message}));
    }
}

TEST(MirrorctlRunFailure, RefusesWhatIsNoAddress) {
    for (const char *ip : {"", "lights.example", "127.0.0", "127.0.0.01", "127.0.0.256", "0x7f.1",
                           " 127.0.0.1", "::g"})
        expectErrors(runRefused(lightsText(5, ip), "nothing"), 68,
                     {"/devices/0/ip: expected an IPv4 or IPv6 address",
                      "found \"" + std::string(ip) + "\"\n"});
    for (const char *ip : {"fe80::1%lo", "127.0.0.1:60222", "0.0.0.0", "224.0.0.1"})
        expectErrors(runRefused(lightsText(5, ip), "nothing"), 68, {"/devices/0/ip: expected "});
    EXPECT_TRUE(contains(runRefused(lightsText(5, "a\\n\\u001bb"), "nothing").err,
                         "found \"a\\n\\u001Bb\"\n"));
    for (const char *ip : {"127.0.40.1", "::1", "::ffff:127.0.40.1"})
        EXPECT_EQ(runRefused(lightsText(5, ip), "nothing").status, 0) << ip;
}

TEST(MirrorctlRunFailure, ListsTheDisplaysThatAreThere) {
    const test::VirtualScreen screen(640, 480);
    const auto there = test::onlyDisplay(screen.variables());
    for (const std::uint32_t wanted : {0u, there + 1}) {
        const std::string message =
            "standard input: line 1, column 2: /displayID: expected one of the displays there "
            "are: " +
            std::to_string(there) + " (640 x 480); found " + std::to_string(wanted) +
            "\n    To fix it: choose one of them; no other is ever taken in its place.\n";
        EXPECT_EQ(mirrorctl({"run", "-"}, screen.variables(), lightsText(wanted, "127.0.40.1")),
                  (ProcessResult{69, "", message}));
    }
}

TEST(MirrorctlRunFailure, SaysThatThereIsNoDisplay) {
    expectErrors(mirrorctl({"run", "-"}, {{"DISPLAY", ""}}, lightsText(5, "127.0.40.1")), 69,
                 {"/displayID: expected a display, but there is none at all",
                  "the variable DISPLAY is not set"});
}

TEST(MirrorctlRunFailure, NamesAddressAndDisplayAtOnce) {
    expectErrors(runRefused(lightsText(6, "nowhere"), "nothing"), 68,
                 {"/devices/0/ip: ", "/displayID: "});
}

TEST(MirrorctlRunFailure, ExplainsRefusedCapture) {
    const ProcessResult result = runRefused(lightsText(5, "127.0.40.1"), "setMirrorConfig");
    expectErrors(result, 77, {"Capturing display 5 was refused.\n"});
    EXPECT_EQ(result.out, "");
}

TEST(MirrorctlRunFailure, ExplainsRefusedStarts) {
    const ProcessResult refused = runRefused(lightsText(5, "127.0.40.1"), "startMirror");
    EXPECT_EQ(refused.status, 71);
    EXPECT_EQ(refused.err, "Mirroring could not be started.\n");
    const ProcessResult stuck = runRefused(lightsText(5, "127.0.40.1"), "stopMirror");
    EXPECT_EQ(stuck.status, 70);
    EXPECT_EQ(stuck.err, "Mirroring could not be stopped properly.\n");
}

TEST(MirrorctlRunFailure, NeedsADevice) {
    const test::VirtualScreen screen(640, 480);
    const auto there = std::to_string(test::onlyDisplay(screen.variables()));
    EXPECT_EQ(mirrorctl({"run", "-"}, screen.variables(),
                        R"({"displayID": )" + there + R"(, "mode": 0, "devices": []})"),
              (ProcessResult{71, "",
                             "Mirroring could not be started: the document has no devices.\n"
                             "No devices.\n"}));
}

TEST(MirrorctlRunFailure, NoticesRunsThatEndByThemselves) {
    for (const char *reason : {"Stream start failed!", "Error during runMirror"})
        expectErrors(mirrorctl({"run", "-"}, test::refusing(reason), lightsText(5, "127.0.40.1")),
                     71, {"Mirroring ended by itself: " + std::string(reason) + "\n"});
}
