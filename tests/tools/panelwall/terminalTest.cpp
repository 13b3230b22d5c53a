#include "tests/support/process.h"
#include "tests/tools/panelwall/wallSetup.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <regex>
#include <sys/wait.h>

using namespace test;

static const std::string enterScreen = "\x1b[?1049h";
static const std::string leaveScreen = "\x1b[?1049l";
static const std::string hideCursor = "\x1b[?25l";
static const std::string showCursor = "\x1b[?25h";
static const std::string home = "\x1b[H";

// Three panels of which two touch the corners of the screen.
static std::string writeConfig(const Folder &folder, const std::string &ip) {
    return folder.write(
        "wall.json",
        documentText({deviceText(ip, 2, {{1, 50, 50}, {2, 300, 200}, {3, 550, 350}})}));
}

TEST(PanelwallTerminal, DrawsColoursInPlaceAndRestoresTheTerminal) {
    const Folder folder;
    Process wall({PANELWALL_PROGRAM, writeConfig(folder, "127.0.41.40"), "--size", "600x400"},
                 {.terminal = test::TerminalSize{}});
    wall.waitFor("0/3 lit");
    EXPECT_EQ(wall.out().find(enterScreen + hideCursor), 0u);
    EXPECT_EQ(wall.out().find("8;2;12;34;56m"), std::string::npos);

    sendTo("127.0.41.40", 60222, {0, 1, 0, 2, 12, 34, 56, 0, 0, 5});
    wall.waitFor("8;2;12;34;56m");
    wall.waitFor("1/3 lit");
    // A later frame begins at the top left again, on the same screen, and has the newer colour.
    const std::size_t seen = wall.out().size();
    sendTo("127.0.41.40", 60222, {0, 1, 0, 2, 65, 43, 21, 0, 0, 5});
    wall.waitFor("8;2;65;43;21m", seen);
    const std::size_t frame = wall.out().rfind(home, wall.out().find("8;2;65;43;21m"));
    ASSERT_NE(frame, std::string::npos);
    EXPECT_EQ(wall.out().find("8;2;12;34;56m", frame), std::string::npos);
    EXPECT_EQ(wall.out().find(enterScreen, 1), std::string::npos);

    wall.type("\x03");
    EXPECT_EQ(wall.finish().status, 0);
    const std::size_t left = wall.out().find(leaveScreen);
    ASSERT_NE(left, std::string::npos);
    EXPECT_NE(wall.out().rfind(showCursor, left), std::string::npos);
    EXPECT_NE(wall.out().find("ended: device 0  127.0.41.40:60222  1/3 lit", left),
              std::string::npos);
}

TEST(PanelwallTerminal, WarnsWhileTheWallFlashes) {
    const Folder folder;
    for (const bool onTerminal : {true, false}) {
        const auto config = folder.write(
            "wall.json", documentText({deviceText("127.0.58.66", 2, {{1, 300, 200}})}));
        Surroundings surroundings;
        if (onTerminal)
            surroundings.terminal = {200, 24};
        Process wall({PANELWALL_PROGRAM, config}, surroundings);
        wall.waitFor(onTerminal ? "0/1 lit" : "listening");
        for (int i = 0; i < 12; ++i) {
            const auto level = static_cast<std::uint8_t>(i % 2 == 0 ? 255 : 0);
            sendTo("127.0.58.66", 60222, {0, 1, 0, 1, level, level, level, 0, 0, 0});
        }
        wall.waitFor("The whole wall flashes, up to 5.5 times within a second");
        wall.signal(SIGINT);
        EXPECT_EQ(wall.finish().status, 0);
    }
}

// The only panel of the wall goes from black to (200, 100, 0); whatever is seen of it meanwhile
// lies on the straight line between them.
TEST(PanelwallTerminal, PanelsMoveToTheirColour) {
    const Folder folder;
    const auto config =
        folder.write("wall.json", documentText({deviceText("127.0.58.61", 2, {{1, 300, 200}})}));
    Process wall({PANELWALL_PROGRAM, config, "--size", "600x400", "--transition-unit", "1000"},
                 {.terminal = test::TerminalSize{}});
    wall.waitFor("0/1 lit");
    const std::size_t seen = wall.out().size();
    sendTo("127.0.58.61", 60222, {0, 1, 0, 1, 200, 100, 0, 0, 0, 1});
    wall.waitFor("8;2;200;100;0m", seen);
    wall.signal(SIGINT);
    EXPECT_EQ(wall.finish().status, 0);

    // A panel has no blue here, unlike all that is drawn around it.
    const std::regex colours("8;2;([0-9]+);([0-9]+);0m");
    std::vector<int> reds;
    for (std::sregex_iterator match(wall.out().begin(), wall.out().end(), colours), end;
         match != end; ++match) {
        const int red = std::stoi((*match)[1]);
        const int green = std::stoi((*match)[2]);
        EXPECT_LE(std::abs(red - 2 * green), 1) << red << " " << green;
        if (reds.empty() || reds.back() != red)
            reds.push_back(red);
    }
    EXPECT_TRUE(std::is_sorted(reds.begin(), reds.end()));
    // Twenty frames a second at most; a busy machine loses many of them, but what it shows is on
    // the way, not the end alone.
    EXPECT_GE(reds.size(), 3u);
    EXPECT_LE(reds.size(), 22u);
}

TEST(PanelwallTerminal, RestoresTheTerminalOnTermination) {
    const Folder folder;
    Process wall({PANELWALL_PROGRAM, writeConfig(folder, "127.0.41.41")},
                 {.terminal = test::TerminalSize{}});
    wall.waitFor("0/3 lit");
    wall.signal(SIGTERM);
    EXPECT_EQ(wall.finish().status, 0);
    EXPECT_NE(wall.out().find(showCursor + leaveScreen), std::string::npos);
}

TEST(PanelwallTerminal, AdaptsToTheSize) {
    const Folder folder;
    Process wall({PANELWALL_PROGRAM, writeConfig(folder, "127.0.41.42"), "--size", "600x400"},
                 {.terminal = test::TerminalSize{100, 40}});
    // 40 rows: title, device line, and 38 rows for a picture whose frame takes two of them.
    const auto topEdge = [](int width) {
        std::string edge = "\u250c";
        for (int i = 0; i < width; ++i)
            edge += "\u2500";
        return edge + "\u2510";
    };
    wall.waitFor(topEdge(98));
    const std::size_t seen = wall.out().size();
    wall.resize({50, 40});
    wall.waitFor(topEdge(48), seen);
    wall.signal(SIGINT);
    EXPECT_EQ(wall.finish().status, 0);
}

TEST(PanelwallTerminal, GivesTheScreenBackWhileStopped) {
    const Folder folder;
    Process wall({PANELWALL_PROGRAM, writeConfig(folder, "127.0.41.43")},
                 {.terminal = test::TerminalSize{}});
    wall.waitFor("0/3 lit");
    wall.signal(SIGTSTP);
    wall.waitFor(leaveScreen);
    int status = 0;
    ASSERT_EQ(waitpid(wall.pid(), &status, WUNTRACED), wall.pid());
    ASSERT_TRUE(WIFSTOPPED(status));
    const std::size_t seen = wall.out().size();
    wall.signal(SIGCONT);
    wall.waitFor(enterScreen, seen);
    wall.waitFor("0/3 lit", seen);
    wall.signal(SIGINT);
    EXPECT_EQ(wall.finish().status, 0);
}

TEST(PanelwallTerminal, PictureIsToldOnTheScreen) {
    const Folder folder;
    Process wall({PANELWALL_PROGRAM, writeConfig(folder, "127.0.41.44"), "--snapshot",
                  folder.file("wall.png")},
                 {.terminal = test::TerminalSize{}});
    wall.waitFor("0/3 lit");
    wall.signal(SIGUSR1);
    wall.waitFor("picture written:");
    EXPECT_EQ(wall.out().find(leaveScreen), std::string::npos);
    wall.signal(SIGINT);
    EXPECT_EQ(wall.finish().status, 0);
}
