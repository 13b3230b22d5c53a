#include "tests/support/virtualScreen.h"
#include "tests/tools/mirrorctl/lightsFile.h"
#include "tests/tools/mirrorctl/program.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <rapidjson/document.h>

using test::Ending;
using test::mirrorctl;

TEST(MirrorctlDisplays, ListsTwoMonitors) {
    const test::VirtualScreen screen(1440, 600);
    screen.run({"xrandr", "--setmonitor", "LEFT", "800/200x600/150+0+0", screen.output()});
    screen.run({"xrandr", "--setmonitor", "RIGHT", "640/160x480/120+800+0", "none"});

    const Ending json = mirrorctl({"displays", "--json"}, {{"DISPLAY", screen.display()}});
    ASSERT_EQ(json.status, 0) << json.err;
    rapidjson::Document tree;
    tree.Parse(json.out.c_str());
    ASSERT_FALSE(tree.HasParseError()) << json.out;
    EXPECT_EQ(tree["numDisplays"].GetUint(), 2u);
    const auto &displays = tree["displays"];
    ASSERT_EQ(displays.Size(), 2u);

    std::string table = " displayID  size in pixels\n";
    for (const auto &display : displays.GetArray()) {
        const std::string number = std::to_string(display["displayID"].GetUint());
        table += std::string(10 - number.size(), ' ') + number + "  " +
                 std::to_string(display["width"].GetUint()) + " x " +
                 std::to_string(display["height"].GetUint()) + "\n";
    }
    const Ending plain = mirrorctl({"displays"}, {{"DISPLAY", screen.display()}});
    EXPECT_EQ(plain.status, 0);
    EXPECT_EQ(plain.out, table);
    EXPECT_NE(table.find("  800 x 600\n"), std::string::npos) << table;
    EXPECT_NE(table.find("  640 x 480\n"), std::string::npos) << table;
    EXPECT_EQ(plain.err, "");
}

// The library lists ten at most.
TEST(MirrorctlDisplays, SaysThatTheListIsCut) {
    const test::VirtualScreen screen(1200, 100);
    for (int i = 0; i < 12; ++i)
        screen.run({"xrandr", "--setmonitor", "M" + std::to_string(i),
                    "100/25x100/25+" + std::to_string(i * 100) + "+0", i == 0 ? "screen" : "none"});
    const test::Program::Variables variables = {{"DISPLAY", screen.display()}};
    const Ending list = mirrorctl({"displays"}, variables);
    EXPECT_EQ(list.status, 0);
    EXPECT_EQ(list.err, "The library lists only 10 of the 12 displays that there are.\n");
    EXPECT_EQ(std::count(list.out.begin(), list.out.end(), '\n'), 11) << list.out;

    const std::string missing = "the library lists only 10 of the 12 displays";
    for (const char *command : {"run", "palette", "snapshot", "check"}) {
        const Ending ending =
            mirrorctl({command, "-"}, variables, test::lightsText(5, "127.0.58.8"));
        EXPECT_EQ(ending.status, 69) << command;
        EXPECT_NE((ending.out + ending.err).find(missing), std::string::npos)
            << command << ending.out << ending.err;
    }
    const Ending layout = mirrorctl({"layout", "1x1", "127.0.58.8", "--display", "5"}, variables);
    EXPECT_EQ(layout.status, 69);
    EXPECT_NE(layout.err.find("It lists only 10 of the 12 displays:\n"), std::string::npos)
        << layout.err;
}

TEST(MirrorctlDisplays, SaysThatDisplayIsNotSet) {
    const Ending ending = mirrorctl({"displays"}, {{"DISPLAY", ""}});
    EXPECT_EQ(ending.status, 69);
    EXPECT_NE(ending.err.find("There is no display to mirror."), std::string::npos) << ending.err;
    EXPECT_NE(ending.err.find("the variable DISPLAY is not set"), std::string::npos) << ending.err;
}

TEST(MirrorctlDisplays, NamesAServerThatDoesNotAnswer) {
    const std::string name = ":59000"; // servers of tests that run meanwhile take the lowest
    const Ending ending = mirrorctl({"displays", "--json"}, {{"DISPLAY", name}});
    EXPECT_EQ(ending.status, 69);
    EXPECT_EQ(ending.out, "{\"numDisplays\":0,\"displays\":[]}\n");
    EXPECT_NE(ending.err.find("DISPLAY is \"" + name + "\"; is that X server running"),
              std::string::npos)
        << ending.err;
}

TEST(MirrorctlDisplays, ReportsALibraryWithoutAnAnswer) {
    const Ending none =
        mirrorctl({"displays"}, {{"LD_PRELOAD", REFUSING_LIBRARY}, {"REFUSE", "getDisplays"}});
    EXPECT_EQ(none.status, 70);
    EXPECT_EQ(none.err, "mirrorctl: the library could not list the displays\n");
    const Ending nonsense =
        mirrorctl({"displays"}, {{"LD_PRELOAD", REFUSING_LIBRARY}, {"REFUSE", "sense"}});
    EXPECT_EQ(nonsense.status, 70);
    EXPECT_EQ(nonsense.err, "mirrorctl: the library's list of displays is not understood\n");
}
