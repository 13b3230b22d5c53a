#include "tests/tools/panelwall/wallSetup.h"

#include <algorithm>
#include <cstdlib>
#include <regex>
#include <sys/wait.h>

using namespace test;

static const std::string enterScreen = "\x1b[?1049h";
static const std::string leaveScreen = "\x1b[?1049l";
static const std::string hideCursor = "\x1b[?25l";
static const std::string showCursor = "\x1b[?25h";
static const std::string home = "\x1b[H";

class PanelwallTerminal : public WallTest {
protected:
    // Starts a wall with three panels on a terminal; two touch corners of a screen of 600 x 400.
    Process startThree(const std::string &ip, std::vector<std::string> options = {},
                       TerminalSize size = {}) const {
        options.insert(
            options.begin(),
            writeConfig({deviceText(ip, 2, {{1, 50, 50}, {2, 300, 200}, {3, 550, 350}})}));
        return start(options, {.terminal = size});
    }
};

TEST_F(PanelwallTerminal, DrawsColoursInPlaceAndRestoresTheTerminal) {
    Process wall = startThree("127.0.41.40", {"--size", "600x400"});
    wall.waitFor("0/3 lit");
    EXPECT_EQ(wall.out().find(enterScreen + hideCursor), 0u);
    EXPECT_FALSE(contains(wall.out(), "8;2;12;34;56m"));

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
    EXPECT_TRUE(contains(wall.out().substr(left), "ended: device 0  127.0.41.40:60222  1/3 lit"));
}

TEST_F(PanelwallTerminal, WarnsWhileTheWallFlashes) {
    for (const bool onTerminal : {true, false}) {
        LaunchOptions options;
        if (onTerminal)
            options.terminal = {200, 24};
        Process wall = start({writeOnePanel("127.0.58.66")}, options);
        wall.waitFor(onTerminal ? "0/1 lit" : "listening");
        for (int i = 0; i < 12; ++i) {
            const auto level = static_cast<std::uint8_t>(i % 2 == 0 ? 255 : 0);
            sendTo("127.0.58.66", 60222, {0, 1, 0, 1, level, level, level, 0, 0, 0});
        }
        wall.waitFor("The wall flashes, up to 6.0 times within a second");
        end(wall);
    }
}

// The wall's only panel goes from black to (200, 100, 0). Every colour that it shows meanwhile lies
// on the straight line between these two.
TEST_F(PanelwallTerminal, PanelsMoveToTheirColour) {
    const auto config = writeConfig({deviceText("127.0.58.61", 2, {{1, 300, 200}})});
    Process wall = start({config, "--size", "600x400", "--transition-unit", "3000"},
                         {.terminal = TerminalSize{}});
    wall.waitFor("0/1 lit");
    const std::size_t seen = wall.out().size();
    sendTo("127.0.58.61", 60222, {0, 1, 0, 1, 200, 100, 0, 0, 0, 1});
    wall.waitFor("8;2;200;100;0m", seen);
    end(wall);

    // The panel has no blue here, unlike everything drawn around it.
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
    // At most twenty frames a second. A busy machine loses many of them, but must show some colours
    // on the way.
    EXPECT_GE(reds.size(), 3u);
    EXPECT_LE(reds.size(), 62u);
}

TEST_F(PanelwallTerminal, RestoresTheTerminalOnTermination) {
    Process wall = startThree("127.0.41.41");
    wall.waitFor("0/3 lit");
    end(wall, SIGTERM);
    EXPECT_TRUE(contains(wall.out(), showCursor + leaveScreen));
}

TEST_F(PanelwallTerminal, AdaptsToTheSize) {
    Process wall = startThree("127.0.41.42", {"--size", "600x400"}, {100, 40});
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
    end(wall);
}

TEST_F(PanelwallTerminal, GivesTheScreenBackWhileStopped) {
    Process wall = startThree("127.0.41.43");
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
    end(wall);
}

TEST_F(PanelwallTerminal, PictureIsToldOnTheScreen) {
    Process wall = startThree("127.0.41.44", {"--snapshot", folder.file("wall.png")});
    wall.waitFor("0/3 lit");
    wall.signal(SIGUSR1);
    wall.waitFor("picture written:");
    EXPECT_FALSE(contains(wall.out(), leaveScreen));
    end(wall);
}
