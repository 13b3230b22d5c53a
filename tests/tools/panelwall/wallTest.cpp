#include "tests/tools/panelwall/walls.h"

#include <gtest/gtest.h>

using namespace panelwall;
using std::chrono::milliseconds;
using test::Bytes;
using test::oneDevice;
using test::start;

TEST(PanelwallWall, BeginsWithoutColours) {
    const Wall wall(oneDevice(1, {{3, 100, 200}, {300, 100, 200}}));
    ASSERT_EQ(wall.devices().size(), 1u);
    const WallDevice &device = wall.devices()[0];
    EXPECT_EQ(device.port, 60221);
    EXPECT_EQ(device.litPanels(), 0u);
    EXPECT_EQ(device.panels[1].panelID, 300);
    EXPECT_EQ(device.panels[1].centreX, 100);
    EXPECT_EQ(device.panels[1].centreY, 200);
    EXPECT_EQ(device.panels[1].halfSide, 50.0);
    EXPECT_FALSE(wall.lastArrival());
}

TEST(PanelwallWall, RecordsColourTheirPanels) {
    Wall wall(oneDevice(1, {{3, 100, 200}, {300, 100, 200}}));
    wall.receive(0, Bytes{2, 3, 1, 10, 20, 30, 0, 5, 44, 1, 1, 2, 3, 0, 6}, start);
    const WallDevice &device = wall.devices()[0];
    EXPECT_EQ(device.panels[0].colour, (Colour{10, 20, 30}));
    EXPECT_EQ(device.panels[0].transitionTime, 5);
    EXPECT_EQ(device.panels[1].colour, (Colour{1, 2, 3}));
    EXPECT_EQ(device.panels[1].transitionTime, 6);
    EXPECT_EQ(device.datagrams, 1u);
    EXPECT_EQ(device.malformed, 0u);
    EXPECT_EQ(wall.lastArrival(), start);
}

TEST(PanelwallWall, PartialDatagramsLeaveOtherPanelsAlone) {
    Wall wall(oneDevice(2, {{1, 100, 200}, {2, 100, 200}}));
    wall.receive(0, Bytes{0, 1, 0, 2, 9, 8, 7, 0, 0, 12}, start);
    EXPECT_FALSE(wall.devices()[0].panels[0].colour);
    EXPECT_EQ(wall.devices()[0].litPanels(), 1u);
    wall.receive(0, Bytes{0, 1, 0, 1, 1, 1, 1, 0, 0, 10}, start);
    EXPECT_EQ(wall.devices()[0].panels[1].colour, (Colour{9, 8, 7}));
    EXPECT_EQ(wall.devices()[0].litPanels(), 2u);
}

TEST(PanelwallWall, PanelsThatShareAnIdentifierShowTheLastRecordForIt) {
    Wall wall(oneDevice(1, {{44, 100, 200}, {300, 100, 200}}));
    wall.receive(0, Bytes{2, 44, 1, 1, 1, 1, 0, 5, 44, 1, 2, 2, 2, 0, 5}, start);
    EXPECT_EQ(wall.devices()[0].panels[0].colour, (Colour{2, 2, 2}));
    EXPECT_EQ(wall.devices()[0].panels[1].colour, (Colour{2, 2, 2}));
}

TEST(PanelwallWall, MalformedDatagramsAreCountedAndChangeNothing) {
    Wall wall(oneDevice(1, {{3, 100, 200}, {4, 100, 200}}));
    wall.receive(0, Bytes{1, 3, 1, 10, 20, 30, 0, 5}, start);
    wall.receive(0, Bytes{2, 3, 1, 99, 99, 99, 0, 5, 4, 1, 9, 9, 9, 1, 5}, start);
    wall.receive(0, Bytes{2, 3, 1, 99, 99, 99, 0, 5, 5, 1, 9, 9, 9, 0, 5}, start + milliseconds(7));
    const WallDevice &device = wall.devices()[0];
    EXPECT_EQ(device.panels[0].colour, (Colour{10, 20, 30}));
    EXPECT_FALSE(device.panels[1].colour);
    EXPECT_EQ(device.datagrams, 3u);
    EXPECT_EQ(device.malformed, 2u);
    EXPECT_EQ(device.lastMalformed, "record 1: panel id 5 is unknown to this device");
    EXPECT_EQ(device.arrivals.last(), start + milliseconds(7));
}

TEST(PanelwallWall, PanelSizeFollowsShapeAndScale) {
    const auto halfSideOf = [](std::int32_t shapeType, double scaleFactor) {
        config::Document document = oneDevice(2, {{1, 100, 200}}, scaleFactor);
        document.devices[0].shapeType = shapeType;
        return Wall(document).devices()[0].panels[0].halfSide;
    };
    EXPECT_EQ(halfSideOf(0, 1.0), 50.0);
    EXPECT_EQ(halfSideOf(1, 1.0), 33.0);
    EXPECT_EQ(halfSideOf(7, 0.1), 3.0);
    EXPECT_EQ(halfSideOf(0, 1.5), 75.0);
    EXPECT_EQ(halfSideOf(0, 0.0), 0.0);
    EXPECT_EQ(halfSideOf(0, -2.0), 0.0);
}
