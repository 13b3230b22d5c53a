#include "tests/support/virtualScreen.h"
#include "tests/tools/mirrorctl/lightsFile.h"
#include "tests/tools/mirrorctl/program.h"

#include <gtest/gtest.h>

using test::contains;
using test::Ending;
using test::LightsFile;
using test::lightsText;
using test::mirrorctl;

namespace {

// With a library that has display 5 and refuses `function`.
Ending runRefused(const std::string &text, const std::string &function) {
    const LightsFile file(text);
    return mirrorctl({"run", file.path(), "--seconds", "0.01"},
                     {{"LD_PRELOAD", REFUSING_LIBRARY}, {"REFUSE", function}});
}

} // namespace

TEST(MirrorctlRunFailure, NamesFilesThatCannotBeRead) {
    const Ending missing = mirrorctl({"run", "/no/such.json"});
    EXPECT_EQ(missing.status, 66);
    EXPECT_EQ(missing.err, "/no/such.json: cannot be read: No such file or directory\n");
    const Ending folder = mirrorctl({"run", "/tmp"});
    EXPECT_EQ(folder.status, 66);
    EXPECT_EQ(folder.err, "/tmp: cannot be read: Is a directory\n");
}

TEST(MirrorctlRunFailure, PrintsEveryFaultOfTheDocument) {
    const LightsFile file(R"({"displayID": 2.5, "mode": 0, "devices": [{}]})");
    const Ending ending = mirrorctl({"run", file.path()});
    EXPECT_EQ(ending.status, 65);
    EXPECT_EQ(ending.out, "");
    const std::string expected[] = {
        "column 2: /displayID: expected an integer that fits 32 bits, found 2.5\n"
        "    To fix it: round it, to 3.\n",
        "column 43: /devices/0/panels: expected an array, found no member of this name\n"
        "    To fix it: add it, such as \"panels\": [] (the device's panels, in the order in "
        "which "
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
        at = ending.err.find(problem, at);
        EXPECT_NE(at, std::string::npos) << problem << " in\n" << ending.err;
    }
    EXPECT_TRUE(ending.err.starts_with(file.path() + ": line 1, column 2: ")) << ending.err;
}

TEST(MirrorctlRunFailure, PlacesSyntaxErrors) {
    const Ending ending = mirrorctl({"run", "-"}, {}, "{\n  \"mode\": }");
    EXPECT_EQ(ending.status, 65);
    EXPECT_EQ(ending.err, "standard input: line 2, column 11: Invalid value.\n"
                          "    To fix it: a value is a number, a text in \"quotes\", [...], {...}, "
                          "true, false or null.\n");
}

TEST(MirrorctlRunFailure, RefusesModesThatDoNotExist) {
    for (const int mode : {-1, 4}) {
        const LightsFile file(lightsText(5, "127.0.40.1", mode));
        const Ending ending = mirrorctl({"run", file.path()});
        EXPECT_EQ(ending.status, 65);
        EXPECT_EQ(ending.err, file.path() +
                                  ": line 1, column 18: /mode: expected 0 (match), 1 (melt), 2 "
                                  "(fade) or 3 (palette), found " +
                                  std::to_string(mode) +
                                  "; a run in any other mode ends at once"
                                  "\n    To fix it: choose one of these four.\n");
    }
}

TEST(MirrorctlRunFailure, RefusesWhatIsNoAddress) {
    for (const char *ip : {"", "lights.example", "127.0.0", "127.0.0.01", "127.0.0.256", "0x7f.1",
                           " 127.0.0.1", "::g"}) {
        const Ending ending = runRefused(lightsText(5, ip), "nothing");
        EXPECT_EQ(ending.status, 68) << ip;
        EXPECT_TRUE(contains(ending.err, "/devices/0/ip: expected an IPv4 or IPv6 address")) << ip;
        EXPECT_TRUE(contains(ending.err, "found \"" + std::string(ip) + "\"\n")) << ending.err;
    }
    for (const char *ip : {"fe80::1%lo", "127.0.0.1:60222", "0.0.0.0", "224.0.0.1"}) {
        const Ending ending = runRefused(lightsText(5, ip), "nothing");
        EXPECT_EQ(ending.status, 68) << ip;
        EXPECT_TRUE(contains(ending.err, "/devices/0/ip: expected ")) << ending.err;
    }
    EXPECT_TRUE(contains(runRefused(lightsText(5, "a\\n\\u001bb"), "nothing").err,
                         "found \"a\\n\\u001Bb\"\n"));
    for (const char *ip : {"127.0.40.1", "::1", "::ffff:127.0.40.1"})
        EXPECT_EQ(runRefused(lightsText(5, ip), "nothing").status, 0) << ip;
}

TEST(MirrorctlRunFailure, ListsTheDisplaysThatAreThere) {
    const test::VirtualScreen screen(640, 480);
    const auto there = test::onlyDisplay(screen.display());
    for (const std::uint32_t wanted : {0u, there + 1}) {
        const LightsFile file(lightsText(wanted, "127.0.40.1"));
        const Ending ending = mirrorctl({"run", file.path()}, {{"DISPLAY", screen.display()}});
        EXPECT_EQ(ending.status, 69);
        EXPECT_EQ(ending.err, file.path() +
                                  ": line 1, column 2: /displayID: expected one of the displays "
                                  "there are: " +
                                  std::to_string(there) + " (640 x 480); found " +
                                  std::to_string(wanted) +
                                  "\n    To fix it: choose one of them; no other is ever taken in "
                                  "its place.\n");
    }
}

TEST(MirrorctlRunFailure, SaysThatThereIsNoDisplay) {
    const LightsFile file(lightsText(5, "127.0.40.1"));
    const Ending ending = mirrorctl({"run", file.path()}, {{"DISPLAY", ""}});
    EXPECT_EQ(ending.status, 69);
    EXPECT_TRUE(contains(ending.err, "/displayID: expected a display, but there is none at all"))
        << ending.err;
    EXPECT_TRUE(contains(ending.err, "the variable DISPLAY is not set")) << ending.err;
}

TEST(MirrorctlRunFailure, NamesAddressAndDisplayAtOnce) {
    const Ending ending = runRefused(lightsText(6, "nowhere"), "nothing");
    EXPECT_EQ(ending.status, 68);
    EXPECT_TRUE(contains(ending.err, "/devices/0/ip: ")) << ending.err;
    EXPECT_TRUE(contains(ending.err, "/displayID: ")) << ending.err;
}

TEST(MirrorctlRunFailure, ExplainsRefusedCapture) {
    const Ending ending = runRefused(lightsText(5, "127.0.40.1"), "setMirrorConfig");
    EXPECT_EQ(ending.status, 77);
    EXPECT_TRUE(contains(ending.err, "Capturing display 5 was refused.\n")) << ending.err;
    EXPECT_EQ(ending.out, "");
}

TEST(MirrorctlRunFailure, ExplainsRefusedStarts) {
    const Ending refused = runRefused(lightsText(5, "127.0.40.1"), "startMirror");
    EXPECT_EQ(refused.status, 71);
    EXPECT_EQ(refused.err, "Mirroring could not be started.\n");
    const Ending stuck = runRefused(lightsText(5, "127.0.40.1"), "stopMirror");
    EXPECT_EQ(stuck.status, 70);
    EXPECT_EQ(stuck.err, "Mirroring could not be stopped properly.\n");
}

TEST(MirrorctlRunFailure, NeedsADevice) {
    const test::VirtualScreen screen(640, 480);
    const auto there = std::to_string(test::onlyDisplay(screen.display()));
    const Ending ending = mirrorctl({"run", "-"}, {{"DISPLAY", screen.display()}},
                                    R"({"displayID": )" + there + R"(, "mode": 0, "devices": []})");
    EXPECT_EQ(ending.status, 71);
    EXPECT_EQ(ending.err, "Mirroring could not be started: the document has no devices.\n"
                          "No devices.\n");
}

TEST(MirrorctlRunFailure, NoticesRunsThatEndByThemselves) {
    for (const char *reason : {"Stream start failed!", "Error during runMirror"}) {
        const Ending ending =
            mirrorctl({"run", "-"}, {{"LD_PRELOAD", REFUSING_LIBRARY}, {"REFUSE", reason}},
                      lightsText(5, "127.0.40.1"));
        EXPECT_EQ(ending.status, 71);
        EXPECT_TRUE(
            contains(ending.err, "Mirroring ended by itself: " + std::string(reason) + "\n"))
            << ending.err;
    }
}
