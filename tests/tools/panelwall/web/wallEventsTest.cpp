#include "tools/panelwall/web/wallEvents.h"
#include "tests/support/expectations.h"
#include "tests/tools/panelwall/walls.h"

#include <gtest/gtest.h>
#include <limits>
#include <rapidjson/document.h>

using namespace panelwall;
using std::chrono::milliseconds;
using test::Bytes;
using test::start;

static config::Document twoDevices() {
    return {
        0, 0, {{"127.0.71.1", 1, 0, 1.5, {{7, 100, 200}, {8, -5, 300}}}, {"::1", 2, 1, 1.5, {}}}};
}

// The data of an event of this name.
static rapidjson::Document dataOf(const std::string &event, const std::string &name) {
    const std::string head = "event: " + name + "\ndata: ";
    EXPECT_EQ(event.substr(0, head.size()), head);
    EXPECT_EQ(event.substr(event.size() - 2), "\n\n");
    const std::string text = event.substr(head.size(), event.size() - head.size() - 2);
    EXPECT_EQ(text.find('\n'), std::string::npos);
    rapidjson::Document document;
    EXPECT_FALSE(document.Parse(text.c_str()).HasParseError()) << text;
    return document;
}

TEST(PanelwallWallEvents, TellWhereEveryPanelHangs) {
    Wall wall(twoDevices());
    wall.keepHistory(100);
    WallFacts facts;
    facts.config = "my \"wall\"\n.json";
    facts.mode = 2;
    facts.screen = {1280, 720};
    const auto event = dataOf(wallEvent(wall, facts), "wall");
    EXPECT_STREQ(event["config"].GetString(), "my \"wall\"\n.json");
    EXPECT_STREQ(event["mode"].GetString(), "fade");
    EXPECT_FALSE(event["steady"].GetBool());
    EXPECT_FALSE(event["recording"].GetBool());
    EXPECT_EQ(event["width"].GetInt(), 1280);
    EXPECT_EQ(event["height"].GetInt(), 720);
    EXPECT_EQ(event["unit"].GetInt(), 100);
    const auto &device = event["devices"][0];
    EXPECT_STREQ(device["layout"].GetString(), "narrow");
    EXPECT_EQ(device["side"].GetDouble(), 150.0);
    EXPECT_EQ(device["panels"][1][0].GetInt(), 8);
    EXPECT_EQ(device["panels"][1][1].GetInt(), -5);
    EXPECT_EQ(device["panels"][1][2].GetInt(), 300);
    EXPECT_EQ(device["rows"].Size(), 2u);
    EXPECT_STREQ(event["devices"][1]["ip"].GetString(), "::1");
    EXPECT_EQ(event["devices"][1]["panels"].Size(), 0u);
}

TEST(PanelwallWallEvents, TellWhatPanelsShowAndWhereTheyAreGoing) {
    Wall wall(twoDevices(), milliseconds(100));
    WallFacts facts;
    facts.start = start;
    wall.receive(0, Bytes{1, 8, 1, 200, 100, 0, 0, 10}, start);
    const auto event =
        dataOf(nowEvent(wall, facts, {5, std::nullopt}, start + milliseconds(500)), "now");
    const auto &device = event["devices"][0];
    EXPECT_STREQ(device["sent"].GetString(), "------c86400");
    EXPECT_STREQ(device["shown"].GetString(), "------643200");
    EXPECT_EQ(device["left"][0].GetInt(), 0);
    EXPECT_EQ(device["left"][1].GetInt(), 500);
    EXPECT_EQ(device["times"][1].GetInt(), 10);
    EXPECT_EQ(device["age"].GetDouble(), 500.0);
    EXPECT_EQ(device["total"].GetInt(), 1);
    EXPECT_EQ(device["lost"].GetInt(), 5);
    EXPECT_FALSE(device.HasMember("reason"));
    EXPECT_FALSE(event["devices"][1].HasMember("lost"));
    EXPECT_FALSE(event["devices"][1].HasMember("age"));
    EXPECT_EQ(event["silence"].GetDouble(), 500.0);
    EXPECT_TRUE(event["heard"].GetBool());
}

// From it, pages recognise whether a panel is still in the same transition.
TEST(PanelwallWallEvents, TellOneTimeOfArrivalWheneverTheyAreMade) {
    Wall wall(twoDevices(), milliseconds(100));
    const auto begin = start + std::chrono::microseconds(300);
    wall.receive(0, Bytes{1, 8, 1, 200, 100, 0, 0, 10}, begin);
    for (int microseconds = 0; microseconds < 1'000'000; microseconds += 33'333) {
        const auto now = begin + std::chrono::microseconds(microseconds);
        const auto event = dataOf(nowEvent(wall, {}, {}, now), "now");
        const auto time = milliseconds(event["time"].GetInt64());
        EXPECT_GE(time, now.time_since_epoch());
        EXPECT_LT(time, now.time_since_epoch() + milliseconds(1));
        EXPECT_EQ(time + milliseconds(event["devices"][0]["left"][1].GetInt64()),
                  start.time_since_epoch() + milliseconds(1001));
    }
}

TEST(PanelwallWallEvents, WarnOfFlashes) {
    Wall wall(twoDevices());
    EXPECT_STREQ(dataOf(nowEvent(wall, {}, {}, start), "now")["warning"].GetString(), "");
    for (int i = 0; i < 8; ++i) {
        const std::uint8_t level = i % 2 == 0 ? 255 : 0;
        wall.receive(0, Bytes{1, 7, 1, level, level, level, 0, 1}, start + milliseconds(50 * i));
    }
    const std::string warning =
        dataOf(nowEvent(wall, {}, {}, start + milliseconds(400)), "now")["warning"].GetString();
    EXPECT_TRUE(test::contains(warning, "up to 4.0 times"));
}

TEST(PanelwallWallEvents, TellTheReasonOfMalformedOnes) {
    Wall wall(twoDevices());
    wall.receive(0, Bytes{}, start);
    const auto event = dataOf(nowEvent(wall, {}, {}, start), "now");
    EXPECT_EQ(event["devices"][0]["malformed"].GetInt(), 1);
    EXPECT_STREQ(event["devices"][0]["reason"].GetString(),
                 "0 bytes, too short for the panel count");
}

TEST(PanelwallWallEvents, TellTheColoursOfTheLastMinute) {
    Wall wall(twoDevices());
    wall.keepHistory(100);
    wall.receive(0, Bytes{1, 7, 1, 1, 2, 3, 0, 10}, start);
    wall.receive(0, Bytes{1, 8, 1, 4, 5, 6, 0, 10}, start + milliseconds(400));
    const auto event = dataOf(pastEvent(wall), "past");
    ASSERT_EQ(event[0].Size(), 4u);
    EXPECT_EQ(event[0][2].GetInt64() - event[0][0].GetInt64(), 10);
    EXPECT_STREQ(event[0][1].GetString(), "010203------");
    EXPECT_STREQ(event[0][3].GetString(), "010203040506");
    EXPECT_EQ(event[1].Size(), 0u);
}

// A scale factor may be any number that JSON can express.
TEST(PanelwallWallEvents, EndlessPanelsAreStillJson) {
    auto document = twoDevices();
    document.devices[0].scaleFactor = std::numeric_limits<double>::max();
    const Wall wall(document);
    const auto event = dataOf(wallEvent(wall, {}), "wall");
    EXPECT_EQ(event["devices"][0]["side"].GetDouble(), 1e9);
}
