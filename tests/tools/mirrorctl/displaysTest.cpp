#include "tests/tools/mirrorctl/mirrorSetup.h"

#include <algorithm>

using test::mirrorctl;
using test::ProcessResult;

TEST(MirrorctlDisplays, ListsTwoMonitors) {
    const test::VirtualScreen screen(1440, 600);
    screen.run({"xrandr", "--setmonitor", "LEFT", "800/200x600/150+0+0", screen.output()});
    screen.run({"xrandr", "--setmonitor", "RIGHT", "640/160x480/120+800+0", "none"});

    const ProcessResult json = mirrorctl({"displays", "--json"}, {{"DISPLAY", screen.display()}});
    ASSERT_EQ(json.status, 0) << json.err;
    const auto tree = test::parsed(json.out);
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
    const ProcessResult plain = mirrorctl({"displays"}, {{"DISPLAY", screen.display()}});
    EXPECT_EQ(plain, (ProcessResult{0, table, ""}));
    test::expectOutput(plain, 0, {"  800 x 600\n", "  640 x 480\n"});
}

// The library lists at most ten displays.
TEST(MirrorctlDisplays, SaysThatTheListIsCut) {
    const test::VirtualScreen screen(1200, 100);
    const std::string output = screen.output();
    for (int i = 0; i < 12; ++i)
        screen.run({"xrandr", "--setmonitor", "M" + std::to_string(i),
                    "100/25x100/25+" + std::to_string(i * 100) + "+0", i == 0 ? output : "none"});
    const test::Variables variables = {{"DISPLAY", screen.display()}};
    const ProcessResult list = mirrorctl({"displays"}, variables);
    EXPECT_EQ(list.status, 0);
    EXPECT_EQ(list.err, "The library lists only 10 of the 12 displays that there are.\n");
    EXPECT_EQ(std::count(list.out.begin(), list.out.end(), '\n'), 11) << list.out;

    const std::string missing = "the library lists only 10 of the 12 displays";
    for (const char *command : {"run", "palette", "snapshot", "check"}) {
        const ProcessResult result =
            mirrorctl({command, "-"}, variables, test::lightsText(5, "127.0.58.8"));
        EXPECT_EQ(result.status, 69) << command;
        EXPECT_TRUE(test::contains(result.out + result.err, missing)) << command;
    }
    test::expectErrors(mirrorctl({"layout", "1x1", "127.0.58.8", "--display", "5"}, variables), 69,
                       {"It lists only 10 of the 12 displays:\n"});
}

TEST(MirrorctlDisplays, SaysThatDisplayIsNotSet) {
    test::expectErrors(mirrorctl({"displays"}, {{"DISPLAY", ""}}), 69,
                       {"There is no display to mirror.", "the variable DISPLAY is not set"});
}

TEST(MirrorctlDisplays, NamesAServerThatDoesNotAnswer) {
    const std::string name = ":59000"; // no test's server has such a high number
    const ProcessResult result = mirrorctl({"displays", "--json"}, {{"DISPLAY", name}});
    EXPECT_EQ(result.out, "{\"numDisplays\":0,\"displays\":[]}\n");
    test::expectErrors(result, 69, {"DISPLAY is \"" + name + "\"; is that X server running"});
}

TEST(MirrorctlDisplays, ReportsALibraryWithoutAnAnswer) {
    EXPECT_EQ(mirrorctl({"displays"}, test::refusing("getDisplays")),
              (ProcessResult{70, "", "mirrorctl: the library could not list the displays\n"}));
    EXPECT_EQ(
        mirrorctl({"displays"}, test::refusing("sense")),
        (ProcessResult{70, "", "mirrorctl: the library's list of displays is not understood\n"}));
}
