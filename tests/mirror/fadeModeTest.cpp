// Fade mode only: one transition time for all panels, and no random numbers.
#include "tests/mirror/modeSteps.h"

using test::Datagram;

namespace {

class FadeMode : public ModeSteps {
protected:
    void fade(std::uint32_t colour) {
        show(test::plainScreen(colour));
        run(&MirrorManager::mirrorModeFade, [](int) { return false; });
    }
};

TEST_F(FadeMode, EveryRecordCarriesTheColourAndFive) {
    lights({{1, {3, 300}}, {2, {258}}, {1, {}}, {7, {}}});
    fade(0xff0000);
    EXPECT_EQ(arrived(0),
              (std::vector<Datagram>{{2, 3, 1, 255, 0, 0, 0, 5, 44, 1, 255, 0, 0, 0, 5}}));
    EXPECT_EQ(arrived(1), (std::vector<Datagram>{{0, 1, 1, 2, 255, 0, 0, 0, 0, 5}}));
    EXPECT_EQ(arrived(2), std::vector<Datagram>{Datagram{0}});
    EXPECT_EQ(arrived(3), (std::vector<Datagram>{{0, 0}}));
}

TEST_F(FadeMode, TheTransitionTimeIsTheManagers) {
    lights({{1, {3}}, {2, {258}}});
    mirrorManager.fadeTransitionTime = 300;
    fade(0xff0000);
    EXPECT_EQ(arrived(0), (std::vector<Datagram>{{1, 3, 1, 255, 0, 0, 0, 44}}));
    EXPECT_EQ(arrived(1), (std::vector<Datagram>{{0, 1, 1, 2, 255, 0, 0, 0, 1, 44}}));
}

TEST_F(FadeMode, NothingIsRandom) {
    lights({{1, {3, 4, 5}}});
    fade(0xff0000);
    EXPECT_EQ(arrived(0).size(), 1u);
    EXPECT_TRUE(system.seeds.empty());
    EXPECT_TRUE(system.draws.empty());
}

// A configuration makes the two counts equal; a device built by hand may not.
TEST_F(FadeMode, TheCountOfPanelsIsTheDevices) {
    for (const int n : {0, 1, 2}) {
        lights({{1, {3, 4, 5}}});
        mirrorManager.devices[0].numPanels = n;
        fade(0xff0000);
        const auto got = arrived(0);
        ASSERT_EQ(got.size(), 1u);
        EXPECT_EQ(got[0].size(), 1 + 7 * static_cast<std::size_t>(n));
    }
}

} // namespace
