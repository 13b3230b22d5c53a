// Monitors that change while the library mirrors one of them.
#include "tests/faults/faultRun.h"

namespace {

// A root of 400 x 400 that is red on top and blue below, with a monitor somewhere on it.
class MonitorFault : public test::FaultRun {
protected:
    MonitorFault() : FaultRun(400, 400) {}
    void SetUp() override {
        light.panels = {{1, 40, 20}};
        screen.fillRect(0, 0, 400, 200, 0xff0000);
        screen.fillRect(0, 200, 400, 200, 0x0000ff);
        place("200/100x100/50+0+0");
        start();
        ASSERT_TRUE(showsPlain(0xff0000));
    }

    void place(const std::string &geometry) {
        screen.run({"xrandr", "--setmonitor", "watched", geometry, screen.output()});
    }
    void move(const std::string &geometry) {
        takeAway();
        place(geometry);
    }
    void takeAway() { screen.run({"xrandr", "--delmonitor", "watched"}); }
};

TEST_F(MonitorFault, ResizedGoesOnAndANewConfigurationTakesTheNewSize) {
    // The panel at (40, 20) of 200 x 100 now shows (80, 80) of 400 x 400.
    move("400/100x400/100+0+0");
    screen.fillRect(0, 0, 400, 200, 0x00ff00);
    EXPECT_TRUE(showsPlain(0x00ff00));
    char displays[512] = "";
    ASSERT_EQ(getDisplays(displays, sizeof displays - 1), 1);
    EXPECT_NE(std::string(displays).find("\"width\":400,\"height\":400"), std::string::npos)
        << displays;
    light.panels = {{1, 40, 340}}; // where the first configuration had nothing
    start();
    EXPECT_TRUE(showsPlain(0x0000ff));
}

// To a client, a rotated monitor is one whose width and height are swapped.
TEST_F(MonitorFault, RotatedGoesOnAndANewConfigurationTakesTheNewSides) {
    move("100/50x200/100+0+100");
    // (40, 20) of 200 x 100 is (20, 40) of 100 x 200, and row 140 of the root.
    EXPECT_TRUE(showsPlain(0xff0000));
    screen.fillRect(0, 0, 400, 200, 0xffff00);
    EXPECT_TRUE(showsPlain(0xffff00));
    light.panels = {{1, 40, 140}};
    start();
    EXPECT_TRUE(showsPlain(0x0000ff));
}

TEST_F(MonitorFault, SwitchedOffKeepsTheLastColourAndOnAgainGoesOn) {
    screen.run({"xrandr", "--setmonitor", "other", "200/100x100/50+200+300", "none"});
    for (const std::uint32_t colour : {0x00ff00u, 0xffffffu}) {
        const auto before = receiver.next();
        takeAway();
        screen.fillRect(0, 0, 400, 200, colour);
        receiver.drain();
        for (int i = 0; i < 10; ++i)
            EXPECT_EQ(receiver.next(), before); // and not what the other monitor shows
        place("200/100x100/50+0+0");
        EXPECT_TRUE(showsPlain(colour));
    }
}

TEST_F(MonitorFault, AnotherOneAddedChangesNothingAndCanBeMirrored) {
    screen.run({"xrandr", "--setmonitor", "added", "100/50x100/50+200+250", "none"});
    receiver.drain();
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(receiver.next(), plainDatagram(0xff0000));
    screen.fillRect(0, 0, 400, 200, 0x00ff00);
    EXPECT_TRUE(showsPlain(0x00ff00));
    const auto displays = test::displayIDs();
    ASSERT_EQ(displays.size(), 2u);
    start(test::documentOf(displays[1], 0, {light}));
    EXPECT_TRUE(showsPlain(0x0000ff));
}

} // namespace
