// Match mode only: every panel has its own colour, in every frame.
#include "tests/mirror/modeSteps.h"

#include <utility>

using test::Datagram;

namespace {

class MatchMode : public ModeSteps {
protected:
    void match(int frames = 1) {
        run(&MirrorManager::mirrorModeMatch, [=](int sleep) { return sleep + 1 < frames; });
    }
};

TEST_F(MatchMode, SendsEachPanelsOwnColour) {
    place({{"-", 1, {{3, 10, 10}, {300, 50, 40}}}, {"-", 2, {{258, 10, 10}}}, {"-", 1}, {"-", 2}});
    test::Pixels screen = test::plainScreen(0xff0000);
    for (std::size_t i = 0; i < screen.size(); ++i)
        if (i % test::screenSide >= 32)
            screen[i] = 0x0a141e;
    show(screen);
    match(3);
    const Datagram wanted[] = {{2, 3, 1, 255, 0, 0, 0, 1, 44, 1, 10, 20, 30, 0, 1},
                               {0, 1, 1, 2, 255, 0, 0, 0, 0, 1},
                               {0},
                               {0, 0}};
    for (int d = 0; d < 4; ++d)
        EXPECT_EQ(arrived(d), std::vector<Datagram>(3, wanted[d]));
}

// One of the panels has samples for a larger screen.
TEST_F(MatchMode, SamplesOffTheFrameAreBlackAndChangeNoOtherPanel) {
    place({{"-", 1, {{1, 10, 10}, {2, 30, 30}}}});
    show(test::plainScreen(0x64c832));
    for (std::int32_t &index : mirrorManager.devices[0].panels[1].samplePixels)
        index += index % 2 == 0 ? 1 << 30 : -(1 << 30);
    match();
    EXPECT_EQ(arrived(0),
              (std::vector<Datagram>{{2, 1, 1, 100, 200, 50, 0, 1, 2, 1, 0, 0, 0, 0, 1}}));
}

TEST_F(MatchMode, WithoutAFrameBufferEveryPanelIsBlack) {
    lights({{1, {1}}});
    unsigned char *const buffer = std::exchange(mirrorManager.frameBuffer, nullptr);
    match();
    mirrorManager.frameBuffer = buffer;
    EXPECT_EQ(arrived(0), (std::vector<Datagram>{{1, 1, 1, 0, 0, 0, 0, 1}}));
}

TEST_F(MatchMode, TheTransitionTimeIsTheFields) {
    lights({{1, {7}}, {2, {7}}});
    mirrorManager.matchTransitionTime = 300; // 1, 44
    match();
    EXPECT_EQ(arrived(0), (std::vector<Datagram>{{1, 7, 1, 0, 0, 0, 0, 44}}));
    EXPECT_EQ(arrived(1), (std::vector<Datagram>{{0, 1, 0, 7, 0, 0, 0, 0, 1, 44}}));
}

TEST_F(MatchMode, ACaptureTakesOneFrameOfEveryDevice) {
    lights({{1, {5}}, {2, {}}});
    mirrorManager.captureRequested = true;
    match(2);
    EXPECT_FALSE(mirrorManager.captureRequested);
    EXPECT_EQ(mirrorManager.streamFrames, (std::vector<std::string>{"1 5 1 0 0 0 0 5", "0 "}));
}

TEST_F(MatchMode, ADeadSocketDoesNotHoldUpTheOthers) {
    lights({{1, {}}, {1, {}}});
    sockets[0].setRemote("255.255.255.255", 60221); // broadcasts are refused: every send fails
    match(2);
    EXPECT_EQ(arrived(1).size(), 2u);
}

} // namespace
