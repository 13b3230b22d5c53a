#include "tools/panelwall/statusText.h"
#include "tests/support/expectations.h"
#include "tests/tools/panelwall/walls.h"

#include <gtest/gtest.h>

using namespace panelwall;
using std::chrono::milliseconds;
using std::chrono::seconds;
using test::Bytes;
using test::start;

static config::Document twoDevices() {
    config::Document document = test::oneDevice(1, {{44, 0, 0}, {300, 0, 0}});
    document.devices.push_back(document.devices[0]);
    document.devices[1].ip = "::1";
    document.devices[1].controlVersion = 2;
    return document;
}

TEST(PanelwallStatusText, OneLinePerDevice) {
    Wall wall(twoDevices());
    wall.receive(1, Bytes{0, 1, 0, 44, 1, 2, 3, 0, 0, 1}, start);
    wall.receive(1, Bytes{7}, start);
    const auto now = start + milliseconds(400);
    const auto lines = deviceLines(wall, now, ReasonPlace::SameLine);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0],
              "device 0  127.0.41.1:60221  0/2 lit   0/s  last never  malformed 0  total 0");
    EXPECT_EQ(lines[1],
              "device 1  [::1]:60222       1/2 lit   2/s  last 0.4 s  malformed 1  total 2  "
              "last malformed: 1 byte, too short for the panel count");
    const auto split = deviceLines(wall, now, ReasonPlace::NextLine);
    ASSERT_EQ(split.size(), 3u);
    EXPECT_EQ(split[2], "    last malformed: 1 byte, too short for the panel count");
}

TEST(PanelwallStatusText, SilenceIsToldAfterThreeSecondsAndEndsWithADatagram) {
    Wall wall(twoDevices());
    EXPECT_EQ(describeSilence(wall, 0, start, start + milliseconds(2999)), "");
    EXPECT_EQ(describeSilence(wall, 0, start, start + seconds(4))
                  .find("Nothing has arrived at all in 4.0 s. Match mode sends"),
              0u);
    wall.receive(0, Bytes{0}, start + seconds(5));
    EXPECT_EQ(describeSilence(wall, 0, start, start + seconds(6)), "");
    EXPECT_EQ(
        describeSilence(wall, 0, start, start + seconds(15)).find("Nothing has arrived for 10"),
        0u);
}

TEST(PanelwallStatusText, AWallThatFlashesIsWarnedOf) {
    Wall wall(twoDevices());
    auto now = start;
    const auto light = [&](std::uint8_t level) {
        wall.receive(0, Bytes{1, 44, 1, level, level, level, 0, 1}, now);
        wall.receive(1, Bytes{0, 1, 0, 44, level, level, level, 0, 0, 1}, now);
        now += milliseconds(100);
    };
    for (int i = 0; i < 7; ++i) {
        EXPECT_EQ(describeFlashes(wall, now), "") << i;
        light(i % 2 == 0 ? 255 : 0);
    }
    EXPECT_EQ(describeFlashes(wall, now),
              "The wall flashes, up to 3.5 times within a second: more than 3 can cause "
              "seizures in some people.");
    EXPECT_NE(describeFlashes(wall, now + milliseconds(4800)), "");
    EXPECT_EQ(describeFlashes(wall, now + milliseconds(4900)), "");
}

// One flashing panel of twenty does not make the wall flash.
TEST(PanelwallStatusText, AFewPanelsAreNotTheWall) {
    auto document = twoDevices();
    document.devices.resize(1);
    document.devices[0].panels.clear();
    for (int id = 0; id < 20; ++id)
        document.devices[0].panels.push_back({id, 0, 0});
    Wall wall(document);
    for (int i = 0; i < 50; ++i) {
        const std::uint8_t level = i % 2 == 0 ? 255 : 0;
        wall.receive(0, Bytes{1, 7, 1, level, level, level, 0, 1}, start + milliseconds(40 * i));
    }
    EXPECT_EQ(wall.flashes().most(), 0.0);
}

TEST(PanelwallStatusText, SilenceMeansSomethingElseInEachMode) {
    const Wall wall(twoDevices());
    const auto later = start + seconds(9);
    for (const int mode : {1, 2})
        EXPECT_TRUE(test::contains(describeSilence(wall, mode, start, later), "does not change"));
    EXPECT_TRUE(test::contains(describeSilence(wall, 3, start, later), "Palette mode"));
    EXPECT_TRUE(test::contains(describeSilence(wall, 7, start, later), "Mode 7 is none of"));
}

TEST(PanelwallStatusText, SharedIdentifiersAreNamed) {
    const auto lines = describeSharedIds(Wall(twoDevices()));
    ASSERT_EQ(lines.size(), 1u); // the wide layout tells 44 and 300 apart
    EXPECT_EQ(lines[0], "device 0: panels 44 and 300 are both 44 in datagrams and show the same "
                        "colour");
}

TEST(PanelwallStatusText, CutsAtCharactersAndDefusesControls) {
    EXPECT_EQ(cutToWidth("abc", 2), "ab");
    EXPECT_EQ(cutToWidth("a\u00e9\u2580b", 3), "a\u00e9\u2580");
    EXPECT_EQ(cutToWidth("a\x1b[2J\n", 10), "a?[2J?");
}

TEST(PanelwallStatusText, WrapsAtSpaces) {
    EXPECT_EQ(wrap("one two three", 7), (std::vector<std::string>{"one two", "three"}));
    EXPECT_TRUE(wrap("", 7).empty());
}
