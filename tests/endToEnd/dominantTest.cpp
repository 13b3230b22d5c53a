// Melt and fade mode: which changes of the screen are sent and which are not; fade mode's
// transition time.
#include "tests/colour/reference.h"
#include "tests/endToEnd/wallRun.h"

using reference::unpacked;
using test::averagingTo;
using test::Datagram;

namespace {

class Dominant : public test::WallRun, public testing::WithParamInterface<int> {
protected:
    void begin() {
        startAtPoll(GetParam(), {{"127.0.57.11", 1, 0, 0.1, test::panels(3, 3)},
                                 {"127.0.57.12", 2, 1, 0.1, test::panels(258, 2)},
                                 {"127.0.57.13", 1, 0, 0.1, {}},
                                 {"127.0.57.14", 2, 0, 0.1, {}}});
    }

    void changes(std::uint32_t colour) {
        SCOPED_TRACE(colour);
        show(averagingTo(unpacked(colour)));
        expectFrame(colour);
    }

    // The mode polls the screen and sends nothing.
    void holds(std::uint32_t colour, int polls = 2) {
        SCOPED_TRACE(colour);
        show(averagingTo(unpacked(colour)));
        for (int poll = 1; poll < polls; ++poll)
            pollAgain();
        expectNothing();
    }
};

TEST_P(Dominant, StepsOfFourAreHeldAndOfFiveSent) {
    begin();
    changes(0x0a0a0a);
    holds(0x0e0e0e);
    holds(0x060606);
    changes(0x0f0a0a);
    holds(0x0b0e06);
    changes(0x0b0e05);
}

TEST_P(Dominant, AChannelThatFallsToNothingIsAChange) {
    begin();
    changes(0x080000);
    changes(0x030000);
    changes(0x000000);
    holds(0x040404);
    holds(0x000000);
    changes(0x050404);
}

TEST_P(Dominant, ADarkScreenSendsNoFirstFrame) {
    begin();
    holds(0x040404);
    holds(0x000000);
    changes(0x000005);
}

TEST_P(Dominant, AStillScreenIsSentOnce) {
    begin();
    changes(0x0a0a0a);
    holds(0x0a0a0a, 8);
    changes(0x0a0a00);
}

TEST_P(Dominant, PlainColours) {
    begin();
    for (const std::uint32_t colour : {0xc86400u, 0xff0000u, 0x00ff00u, 0x0000ffu, 0xffffffu}) {
        show(test::plainScreen(colour));
        expectFrame(reference::packed(
            reference::dominantOf(test::samplesOf(test::plainScreen(colour))).colour));
    }
    show(test::plainScreen(0));
    expectFrame(0);
}

INSTANTIATE_TEST_SUITE_P(Modes, Dominant, testing::Values(1, 2), [](const auto &info) {
    return std::string(info.param == 1 ? "melt" : "fade");
});

class Fade : public test::WallRun {};

TEST_F(Fade, AllPanelsFadeInTheSameTime) {
    startAtPoll(2, {{"127.0.57.31", 1, 0, 0.1, {{3, 20, 20}, {300, 80, 80}}},
                    {"127.0.57.32", 2, 1, 0.1, {{258, 50, 50}, {-1, 0, 0}}},
                    {"127.0.57.33", 0, 0, 0.1, {}}});
    show(test::plainScreen(0xff0000));
    EXPECT_EQ(receivers[0]->next(), (Datagram{2, 3, 1, 255, 0, 0, 0, 5, 44, 1, 255, 0, 0, 0, 5}));
    EXPECT_EQ(receivers[1]->next(),
              (Datagram{0, 2, 1, 2, 255, 0, 0, 0, 0, 5, 255, 255, 255, 0, 0, 0, 0, 5}));
    EXPECT_EQ(receivers[2]->next(), (Datagram{0, 0}));
    show(test::plainScreen(0));
    EXPECT_EQ(receivers[0]->next(), (Datagram{2, 3, 1, 0, 0, 0, 0, 5, 44, 1, 0, 0, 0, 0, 5}));
    EXPECT_EQ(receivers[1]->next(),
              (Datagram{0, 2, 1, 2, 0, 0, 0, 0, 0, 5, 255, 255, 0, 0, 0, 0, 0, 5}));
    EXPECT_EQ(receivers[2]->next(), (Datagram{0, 0}));
}

} // namespace
