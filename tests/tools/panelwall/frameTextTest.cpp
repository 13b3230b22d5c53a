#include "tests/support/expectations.h"
#include "tests/tools/panelwall/walls.h"
#include "tools/panelwall/terminal/liveView.h"

#include <gtest/gtest.h>

using namespace panelwall;
using test::start;

// The number of columns that a line takes on the terminal.
static std::size_t widthOf(const std::string &line) {
    std::size_t width = 0;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '\x1b')
            i = line.find('m', i);
        else if ((static_cast<unsigned char>(line[i]) & 0xc0) != 0x80)
            ++width;
    }
    return width;
}

// A wall with two panels, one of which already shows its colour.
static Wall makeWall() {
    Wall wall(test::oneDevice(1, {{1, 100, 100}, {2, 900, 500}}));
    wall.receive(0, test::Bytes{1, 1, 1, 12, 34, 56, 0, 0}, start);
    return wall;
}

TEST(PanelwallHalfBlocks, TwoRowsShareALine) {
    Canvas canvas(2, 3, Colour{1, 2, 3});
    canvas.fill({0.0, 1.0, 1.0, 2.0}, 0.0, Colour{9, 8, 7});
    const auto lines = halfBlockLines(canvas);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], "\x1b[38;2;1;2;3m\x1b[48;2;9;8;7m\u2580\x1b[48;2;1;2;3m\u2580\x1b[0m");
    EXPECT_EQ(lines[1], "\x1b[38;2;1;2;3m\u2580\u2580\x1b[0m");
}

TEST(PanelwallFrameText, ShowsTitlePictureDevicesAndMessageInThisOrder) {
    const auto lines = composeFrame(makeWall(), start, {1920, 1080},
                                    {"the title", {"device line"}, "a message"}, {80, 24});
    ASSERT_EQ(lines.size(), 24u);
    EXPECT_EQ(lines[0], "the title");
    EXPECT_EQ(lines[22], "device line");
    EXPECT_EQ(lines[23], "a message");
    std::string all;
    for (const std::string &line : lines)
        all += line;
    EXPECT_TRUE(test::contains(all, "8;2;12;34;56m"));
}

TEST(PanelwallFrameText, NeverOutgrowsTheTerminal) {
    std::vector<std::string> devices(9, std::string(150, 'd'));
    const FrameContent content{std::string(200, 't'), devices, "words of a message to be wrapped"};
    for (int width = 1; width < 130; width += 7) {
        for (int height = 1; height < 60; ++height) {
            const auto lines =
                composeFrame(makeWall(), start, {1920, 1080}, content, {width, height});
            EXPECT_LE(lines.size(), static_cast<std::size_t>(height));
            for (const std::string &line : lines)
                EXPECT_LE(widthOf(line), static_cast<std::size_t>(width));
        }
    }
}

TEST(PanelwallFrameText, SaysWhatASmallTerminalLeavesOut) {
    const FrameContent content{"t", std::vector<std::string>(9, "device"), ""};
    const auto lines = composeFrame(makeWall(), start, {1920, 1080}, content, {60, 8});
    EXPECT_EQ(lines.back(), "and 7 more lines; a taller terminal shows them");
}
