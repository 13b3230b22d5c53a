// Behaviour common to melt and fade mode: when they send, and which colour.
#include "tests/mirror/modeSteps.h"

#include <algorithm>
#include <random>

using reference::unpacked;
using test::averagingTo;
using test::Datagram;
using test::Pixels;

namespace {

struct Kind {
    const char *name;
    Mode mode;
};

const Kind kinds[] = {{"melt", &MirrorManager::mirrorModeMelt},
                      {"fade", &MirrorManager::mirrorModeFade}};

class DominantModes : public ModeSteps, public testing::WithParamInterface<Kind> {
protected:
    static RGB dominantOf(const Pixels &screen) {
        return reference::dominantOf(test::samplesOf(screen)).colour;
    }

    // Shows the screens one after the other, the first before the start, and checks every poll:
    // each light gets exactly one datagram when the colour differs from the last one sent, and none
    // otherwise. Returns for each screen whether it was sent.
    std::vector<bool> watch(const std::vector<Pixels> &screens) {
        std::vector<bool> sent;
        RGB last;
        show(screens[0]);
        CaptureStdout();
        run(GetParam().mode, [&](int poll) {
            const std::size_t now = static_cast<std::size_t>(poll);
            const RGB colour = dominantOf(screens[now]);
            const bool differs = reference::differs(colour, last);
            if (differs)
                last = colour;
            for (int d = 0; d < count(); ++d) {
                const std::vector<Datagram> datagrams = arrived(d);
                EXPECT_EQ(datagrams.size(), differs ? 1u : 0u) << "poll " << poll;
                for (const Datagram &datagram : datagrams)
                    expectColour(d, datagram, colour);
            }
            sent.push_back(differs);
            if (now + 1 == screens.size())
                return false;
            show(screens[now + 1]);
            return true;
        });
        GetCapturedStdout();
        return sent;
    }

    void expectColour(int d, const Datagram &datagram, RGB colour) {
        const Light &light = all[static_cast<std::size_t>(d)];
        const auto records = test::decode(light.controlVersion, datagram);
        ASSERT_EQ(records.size(), light.panelIDs.size());
        const int mask = light.controlVersion == 1 ? 0xff : 0xffff;
        for (std::size_t p = 0; p < records.size(); ++p) {
            EXPECT_EQ(records[p].id, light.panelIDs[p] & mask);
            EXPECT_EQ(records[p].colour, reference::packed(colour));
            EXPECT_EQ(records[p].white, 0);
        }
    }

    std::vector<bool> watchAverages(const std::vector<std::uint32_t> &colours) {
        std::vector<Pixels> screens;
        for (const std::uint32_t colour : colours) {
            screens.push_back(averagingTo(unpacked(colour)));
            EXPECT_EQ(reference::packed(dominantOf(screens.back())), colour);
        }
        return watch(screens);
    }
};

TEST_P(DominantModes, StepsOfFourAreHeldAndOfFiveSent) {
    lights({{1, {3, 300}}, {2, {258}}});
    for (const std::uint32_t held : {0x0e0e0e, 0x060606})
        EXPECT_EQ(watchAverages({0x0a0a0a, held}), (std::vector<bool>{true, false}));
    for (const std::uint32_t sent : {0x0f0a0a, 0x0a0f0a, 0x0a0a0f, 0x0a0a05, 0x0a050a, 0x050a0a})
        EXPECT_EQ(watchAverages({0x0a0a0a, sent}), (std::vector<bool>{true, true}));
}

// Each colour is compared with the last one sent, not with the one before it.
TEST_P(DominantModes, SmallStepsAddUp) {
    lights({{1, {3}}});
    EXPECT_EQ(watchAverages({0x070707, 0x0a0707, 0x0b0707, 0x0c0707, 0x080707, 0x070707}),
              (std::vector<bool>{true, false, false, true, false, true}));
}

TEST_P(DominantModes, AChannelThatFallsToNothingIsAChange) {
    lights({{1, {3}}, {2, {258}}});
    EXPECT_EQ(watchAverages({0x080000, 0x030000, 0x000000, 0x040404, 0x000000}),
              (std::vector<bool>{true, true, true, false, false}));
    EXPECT_EQ(watchAverages({0x080101, 0x080001, 0x080000, 0x080404, 0x080000}),
              (std::vector<bool>{true, true, true, false, false}));
}

TEST_P(DominantModes, RisesFromNothingByMoreThanFour) {
    lights({{1, {3}}});
    EXPECT_EQ(watchAverages({0x000000, 0x040404, 0x040304, 0x000000, 0x050000}),
              (std::vector<bool>{false, false, false, false, true}));
    EXPECT_EQ(watchAverages({0x000400, 0x000500}), (std::vector<bool>{false, true}));
    EXPECT_EQ(watchAverages({0x000004, 0x000005}), (std::vector<bool>{false, true}));
}

TEST_P(DominantModes, ABlackScreenSendsNoFirstFrame) {
    lights({{1, {3}}});
    EXPECT_EQ(watch(std::vector<Pixels>(50, test::plainScreen(0))), std::vector<bool>(50, false));
}

TEST_P(DominantModes, AStillScreenIsSentOnce) {
    lights({{1, {3}}, {0, {258, 7}}, {1, {}}, {2, {}}});
    std::vector<bool> once(60, false);
    once[0] = true;
    EXPECT_EQ(watch(std::vector<Pixels>(60, test::plainScreen(0xc86400))), once);
}

TEST_P(DominantModes, EachRunStartsFromBlack) {
    lights({{1, {3}}});
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(watch({test::plainScreen(0x00ff00)}), std::vector<bool>{true});
}

TEST_P(DominantModes, RandomScreens) {
    lights({{1, {3}}, {2, {258}}});
    std::mt19937 random(7);
    std::vector<Pixels> screens;
    int channels[3] = {6, 6, 6};
    for (int i = 0; i < 400; ++i) {
        if (i % 8 != 0) { // small random steps
            for (int &channel : channels)
                channel = std::clamp(channel + static_cast<int>(random() % 5) - 2, 0, 12);
            screens.push_back(averagingTo({static_cast<std::uint8_t>(channels[0]),
                                           static_cast<std::uint8_t>(channels[1]),
                                           static_cast<std::uint8_t>(channels[2])}));
            continue;
        }
        std::vector<std::uint32_t> words(6400);
        const std::uint32_t colours[] = {static_cast<std::uint32_t>(random()),
                                         static_cast<std::uint32_t>(random()) & 0x0f0f0f};
        for (std::uint32_t &word : words)
            word = colours[random() % 2] & 0xffffff;
        screens.push_back(test::screenSampledAs(words));
    }
    const std::vector<bool> sent = watch(screens);
    EXPECT_GT(std::count(sent.begin(), sent.end(), true), 100);
    EXPECT_GT(std::count(sent.begin(), sent.end(), false), 100);
}

// Each run computes the sample grid once; the grid does not follow the screen.
TEST_P(DominantModes, TheGridIsThatOfTheScreen) {
    lights({{1, {3}}});
    Pixels screen = test::plainScreen(0xff0000);
    for (int row = 10; row < 90; ++row)
        for (int column = 10; column < 90; ++column)
            screen[static_cast<std::size_t>(row * 100 + column)] = 0x00ff00;
    show(screen);
    run(GetParam().mode, [&](int) { return false; });
    const auto datagrams = arrived(0);
    ASSERT_EQ(datagrams.size(), 1u);
    expectColour(0, datagrams[0], dominantOf(test::plainScreen(0x00ff00)));
}

TEST_P(DominantModes, ACaptureWaitsForTheNextChange) {
    lights({{1, {5, 6}}, {2, {}}, {2, {258}}});
    show(test::plainScreen(0xff0000));
    run(GetParam().mode, [&](int poll) {
        if (poll == 0)
            writeFlag(mirrorManager.captureRequested, true);
        if (poll > 0 && poll < 5) {
            EXPECT_TRUE(readFlag(mirrorManager.captureRequested));
            EXPECT_TRUE(mirrorManager.streamFrames.empty());
        }
        if (poll == 4)
            show(test::plainScreen(0x0000ff));
        return poll < 6;
    });
    EXPECT_FALSE(mirrorManager.captureRequested);
    EXPECT_EQ(mirrorManager.streamFrames,
              (std::vector<std::string>{"2 5 1 0 1 255 0 5 6 1 0 1 255 0 5", "0 ",
                                        "1 258 1 0 1 255 0 5"}));
}

TEST_P(DominantModes, WithoutDevicesAChangeConsumesACapture) {
    lights({});
    show(test::plainScreen(0));
    mirrorManager.captureRequested = true;
    run(GetParam().mode, [&](int poll) {
        if (poll == 0)
            EXPECT_TRUE(readFlag(mirrorManager.captureRequested));
        show(test::plainScreen(0xff0000));
        return poll < 1;
    });
    EXPECT_FALSE(mirrorManager.captureRequested);
    EXPECT_TRUE(mirrorManager.streamFrames.empty());
}

INSTANTIATE_TEST_SUITE_P(Modes, DominantModes, testing::ValuesIn(kinds),
                         [](const auto &info) { return std::string(info.param.name); });

} // namespace
