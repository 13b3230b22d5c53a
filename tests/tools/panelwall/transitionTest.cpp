// Transitions of panels between colours, by a clock that the tests set.
#include "tools/wall/transition.h"
#include "tests/tools/panelwall/walls.h"

#include <gtest/gtest.h>
#include <ostream>

using namespace panelwall;
using std::chrono::milliseconds;

using test::Bytes;
using test::start;

static Clock::time_point after(int time) {
    return start + milliseconds(time);
}

namespace lights {
static void PrintTo(const Colour &colour, std::ostream *out) {
    *out << int{colour.red} << " " << int{colour.green} << " " << int{colour.blue};
}
} // namespace lights

TEST(PanelwallTransition, BeginsAtRestInBlack) {
    const Transition transition;
    EXPECT_EQ(transition.at(start), (Colour{0, 0, 0}));
    EXPECT_FALSE(transition.isMoving(start));
}

TEST(PanelwallTransition, IsLinearInEachChannel) {
    Transition transition;
    transition.moveTo({100, 200, 0}, milliseconds(0), start);
    transition.moveTo({200, 0, 255}, milliseconds(1000), start);
    EXPECT_EQ(transition.at(after(0)), (Colour{100, 200, 0}));
    EXPECT_EQ(transition.at(after(250)), (Colour{125, 150, 64}));
    EXPECT_EQ(transition.at(after(500)), (Colour{150, 100, 128}));
    EXPECT_EQ(transition.at(after(900)), (Colour{190, 20, 230}));
    EXPECT_EQ(transition.at(after(1000)), (Colour{200, 0, 255}));
    EXPECT_EQ(transition.at(after(5000)), (Colour{200, 0, 255}));
}

TEST(PanelwallTransition, MovesUntilItArrives) {
    Transition transition;
    transition.moveTo({1, 2, 3}, milliseconds(700), start);
    EXPECT_TRUE(transition.isMoving(after(0)));
    EXPECT_TRUE(transition.isMoving(after(699)));
    EXPECT_FALSE(transition.isMoving(after(700)));
    transition.moveTo({1, 2, 3}, milliseconds(700), after(800));
    EXPECT_FALSE(transition.isMoving(after(900))) << "the way to the same colour is no way";
}

TEST(PanelwallTransition, LengthOfNothingIsAtOnce) {
    Transition transition;
    transition.moveTo({9, 8, 7}, milliseconds(0), start);
    EXPECT_EQ(transition.at(start), (Colour{9, 8, 7}));
    EXPECT_FALSE(transition.isMoving(start));
}

TEST(PanelwallTransition, SetsOutAnewFromTheColourOfTheMoment) {
    Transition transition;
    transition.moveTo({200, 0, 0}, milliseconds(1000), start);
    transition.moveTo({0, 100, 0}, milliseconds(200), after(500));
    EXPECT_EQ(transition.at(after(500)), (Colour{100, 0, 0}));
    EXPECT_EQ(transition.at(after(600)), (Colour{50, 50, 0}));
    EXPECT_EQ(transition.at(after(700)), (Colour{0, 100, 0}));
}

// As in match mode, where records arrive before the previous transition has ended.
TEST(PanelwallTransition, ArrivesAlthoughItIsSentOnAgainAndAgain) {
    Transition transition;
    for (int time = 0; time < 42 * 40; time += 42)
        transition.moveTo({1, 128, 255}, milliseconds(100), after(time));
    EXPECT_EQ(transition.at(after(42 * 40)), (Colour{1, 128, 255}));
}

static config::Document twoPanels(int controlVersion) {
    return test::oneDevice(controlVersion, {{1, 100, 200}, {2, 300, 200}});
}

static std::optional<Colour> shown(const Wall &wall, std::size_t panel, int time) {
    return wall.devices()[0].panels[panel].shownAt(after(time));
}

TEST(PanelwallTransition, PanelsTakeTheTimeOfTheirRecords) {
    Wall wall(twoPanels(2));
    EXPECT_FALSE(shown(wall, 0, 0));
    EXPECT_FALSE(wall.isMoving(start));
    wall.receive(0, Bytes{0, 2, 0, 1, 100, 0, 0, 0, 0, 2, 0, 2, 0, 100, 0, 0, 1, 0}, start);
    EXPECT_EQ(shown(wall, 0, 0), (Colour{0, 0, 0})); // dark, no longer hollow
    EXPECT_EQ(shown(wall, 0, 100), (Colour{50, 0, 0}));
    EXPECT_EQ(shown(wall, 0, 200), (Colour{100, 0, 0}));
    EXPECT_EQ(shown(wall, 1, 12800), (Colour{0, 50, 0}));
    EXPECT_TRUE(wall.isMoving(after(25599)));
    EXPECT_FALSE(wall.isMoving(after(25600)));
    EXPECT_EQ(wall.devices()[0].panels[0].colour, (Colour{100, 0, 0})) << "the colour sent";
}

TEST(PanelwallTransition, OtherPanelsGoOnMeanwhile) {
    Wall wall(twoPanels(1));
    wall.receive(0, Bytes{2, 1, 1, 100, 0, 0, 0, 10, 2, 1, 100, 0, 0, 0, 10}, start);
    wall.receive(0, Bytes{1, 1, 1, 0, 0, 50, 0, 1}, after(500));
    EXPECT_EQ(shown(wall, 0, 550), (Colour{25, 0, 25}));
    EXPECT_EQ(shown(wall, 1, 550), (Colour{55, 0, 0}));
}

TEST(PanelwallTransition, TheUnitIsGiven) {
    Wall slow(twoPanels(1), milliseconds(1000));
    Wall instant(twoPanels(1), milliseconds(0));
    for (Wall *wall : {&slow, &instant})
        wall->receive(0, Bytes{1, 1, 1, 100, 0, 0, 0, 255}, start);
    EXPECT_EQ(shown(slow, 0, 127500), (Colour{50, 0, 0}));
    EXPECT_EQ(shown(instant, 0, 0), (Colour{100, 0, 0}));
    EXPECT_FALSE(instant.isMoving(start));
}

TEST(PanelwallTransition, MalformedDatagramsStopNothing) {
    Wall wall(twoPanels(1));
    wall.receive(0, Bytes{1, 1, 1, 100, 0, 0, 0, 10}, start);
    wall.receive(0, Bytes{1, 1, 1, 0, 0, 0, 7, 0}, after(100));
    EXPECT_EQ(shown(wall, 0, 500), (Colour{50, 0, 0}));
}
