#include "tools/panelwall/picture.h"

#include "tests/support/files.h"
#include "tests/tools/panelwall/readPng.h"
#include "tests/tools/panelwall/walls.h"
#include "tools/panelwall/pngFile.h"

#include <gtest/gtest.h>

using namespace panelwall;

static constexpr std::uint32_t dark = 0x13151a;

// When the pictures are taken: after all transitions have ended.
static const Clock::time_point moment = test::start;

// A narrow device of shape type 0; panel i has identifier i and the colour (100 + i, 0, 200).
static Wall makeWall(double scaleFactor, const std::vector<std::pair<int, int>> &places,
                     std::uint8_t lit) {
    std::vector<config::PanelEntry> panels;
    for (const auto &[x, y] : places)
        panels.push_back({static_cast<std::int32_t>(panels.size()), x, y});
    test::Bytes bytes{lit};
    for (std::uint8_t id = 0; id < lit; ++id)
        bytes.insert(bytes.end(), {id, 1, static_cast<std::uint8_t>(100 + id), 0, 200, 0, 1});
    Wall wall(test::oneDevice(1, panels, scaleFactor));
    wall.receive(0, bytes, moment - std::chrono::seconds(1));
    return wall;
}

static std::uint32_t rgb(Colour colour) {
    return static_cast<std::uint32_t>(colour.red << 16 | colour.green << 8 | colour.blue);
}

static void expectSize(Size size, int width, int height) {
    EXPECT_EQ(size.width, width);
    EXPECT_EQ(size.height, height);
}

TEST(PanelwallPicture, FileHoldsEveryPanelAtItsPlaceAndSize) {
    const Wall wall = makeWall(1.0, {{100, 100}, {300, 150}, {500, 250}}, 2);
    const test::Folder folder;
    const std::string path = folder.file("wall.png");
    ASSERT_EQ(writePng(drawFine(wall, moment, {640, 360}, {640, 360}), path), "");
    const test::Picture picture = test::readPng(path);
    ASSERT_EQ(picture.width, 640);
    ASSERT_EQ(picture.height, 360);
    EXPECT_EQ(picture.at(100, 100), 0x6400c8u);
    EXPECT_EQ(picture.at(300, 150), 0x6500c8u);
    // The squares reach 50 pixels from their centres, including a border that is one line wide.
    for (const int reach : {-48, 47}) {
        EXPECT_EQ(picture.at(100 + reach, 100), 0x6400c8u);
        EXPECT_EQ(picture.at(300, 150 + reach), 0x6500c8u);
    }
    EXPECT_NE(picture.at(50, 100), 0x6400c8u); // the border
    EXPECT_NE(picture.at(50, 100), dark);
    EXPECT_EQ(picture.at(49, 100), dark);
    EXPECT_EQ(picture.at(150, 100), dark);
    EXPECT_EQ(picture.at(50, 50), dark); // a round corner
    // The third panel received nothing, so it is hollow.
    EXPECT_EQ(picture.at(500, 250), dark);
    EXPECT_NE(picture.at(450, 250), dark);
    EXPECT_NE(picture.at(549, 250), dark);
    // The outline of the screen.
    EXPECT_NE(picture.at(0, 200), dark);
    EXPECT_NE(picture.at(639, 200), dark);
    EXPECT_NE(picture.at(320, 0), dark);
    EXPECT_NE(picture.at(320, 359), dark);
    EXPECT_EQ(folder.list(), std::vector<std::string>{"wall.png"});
}

TEST(PanelwallPicture, PanelsHaveTheColourOfTheMoment) {
    const Wall wall = makeWall(1.0, {{100, 100}}, 1); // (100, 0, 200) in 100 ms
    const auto begin = moment - std::chrono::seconds(1);
    for (const auto &[time, colour] : {std::pair<int, std::uint32_t>{0, 0x000000u},
                                       {25, 0x190032u},
                                       {50, 0x320064u},
                                       {100, 0x6400c8u}}) {
        const auto now = begin + std::chrono::milliseconds(time);
        EXPECT_EQ(rgb(drawFine(wall, now, {200, 200}, {200, 200}).at(100, 100)), colour) << time;
        EXPECT_EQ(rgb(drawCoarse(wall, now, {200, 200}, {20, 20}).at(10, 10)), colour) << time;
    }
}

TEST(PanelwallPicture, LaterPanelsLieOnTop) {
    const Wall wall = makeWall(1.0, {{100, 100}, {140, 100}}, 2);
    const Canvas canvas = drawFine(wall, moment, {300, 200}, {300, 200});
    EXPECT_EQ(rgb(canvas.at(120, 100)), 0x6500c8u);
    EXPECT_EQ(rgb(canvas.at(80, 100)), 0x6400c8u);
}

TEST(PanelwallPicture, PanelsOffTheScreenAreCut) {
    const Wall wall = makeWall(1.0, {{0, 0}, {299, 199}, {-500, 90}, {2147483647, -2147483647}}, 4);
    const Canvas canvas = drawFine(wall, moment, {300, 200}, {300, 200});
    EXPECT_EQ(rgb(canvas.at(0, 0)), 0x6400c8u);
    EXPECT_EQ(rgb(canvas.at(299, 199)), 0x6500c8u);
    EXPECT_EQ(rgb(canvas.at(150, 100)), dark);
}

TEST(PanelwallPicture, ExtremeScalesAreDrawn) {
    for (const double scale : {0.0, -3.0, 1e-9, 1e9, 1e300}) {
        const Wall wall = makeWall(scale, {{100, 100}}, 1);
        const Size screen = screenSize(wall);
        ASSERT_GE(screen.width, 100) << scale;
        const Canvas canvas = drawFine(wall, moment, {200, 200}, {200, 200});
        EXPECT_EQ(rgb(canvas.at(100, 100)), 0x6400c8u) << scale;
        const Canvas coarse = drawCoarse(wall, moment, {200, 200}, {20, 10});
        EXPECT_EQ(rgb(coarse.at(10, 5)), 0x6400c8u) << scale;
    }
}

TEST(PanelwallPicture, ScaledDownPanelsKeepTheirCentres) {
    const Wall wall = makeWall(1.0, {{960, 540}, {60, 60}, {1800, 1000}}, 3);
    const Canvas canvas = drawFine(wall, moment, {1920, 1080}, {192, 108});
    EXPECT_EQ(rgb(canvas.at(96, 54)), 0x6400c8u);
    EXPECT_EQ(rgb(canvas.at(6, 6)), 0x6500c8u);
    EXPECT_EQ(rgb(canvas.at(180, 100)), 0x6600c8u);
    const Canvas coarse = drawCoarse(wall, moment, {1920, 1080}, {80, 45});
    EXPECT_EQ(rgb(coarse.at(40, 22)), 0x6400c8u);
    EXPECT_EQ(rgb(coarse.at(2, 2)), 0x6500c8u);
    EXPECT_EQ(rgb(coarse.at(75, 41)), 0x6600c8u);
}

TEST(PanelwallPicture, HollowIsToldFromBlack) {
    Wall wall(test::oneDevice(1, {{1, 100, 100}, {2, 300, 100}}));
    wall.receive(0, test::Bytes{1, 1, 1, 0, 0, 0, 0, 1}, moment - std::chrono::seconds(1));
    const Canvas canvas = drawFine(wall, moment, {400, 200}, {400, 200});
    EXPECT_EQ(rgb(canvas.at(100, 100)), 0u);
    EXPECT_EQ(rgb(canvas.at(300, 100)), dark);
}

TEST(PanelwallPicture, ScreenHoldsEveryPanel) {
    const Wall wall = makeWall(1.0, {{100, 100}, {500, 250}}, 0);
    expectSize(screenSize(wall), 550, 300);
    expectSize(screenSize(makeWall(1.0, {}, 0)), 1920, 1080);
}

TEST(PanelwallPicture, FitsIntoTheRoomInTheScreensShape) {
    expectSize(fitInto({1920, 1080}, {78, 100}), 78, 44);
    expectSize(fitInto({1000, 2000}, {300, 100}), 50, 100);
    expectSize(fitInto({32768, 1}, {10, 10}), 10, 1);
}

TEST(PanelwallPicture, ReplacesAnEarlierFile) {
    const test::Folder folder;
    const std::string path = folder.write("wall.png", "not a picture");
    ASSERT_EQ(writePng(Canvas(4, 3, Colour{1, 2, 3}), path), "");
    EXPECT_EQ(test::readPng(path).at(3, 2), 0x010203u);
}

TEST(PanelwallPicture, TroubleWithTheFileIsToldAndLeavesNothing) {
    const test::Folder folder;
    const Canvas canvas(4, 3, Colour{});
    EXPECT_NE(writePng(canvas, folder.file("missing/wall.png")), "");
    EXPECT_NE(findObstacle(folder.file("missing/wall.png")), "");
    EXPECT_EQ(findObstacle(folder.file("wall.png")), "");
    const std::string blocked = folder.file("");
    EXPECT_NE(findObstacle(blocked), "");
    EXPECT_NE(writePng(canvas, blocked), "");
    EXPECT_TRUE(folder.list().empty());
}
