// Behaviour common to all modes: seeds, sleeps, stops, and captures without devices.
#include "tests/mirror/modeSteps.h"

#include <ctime>

namespace {

struct Kind {
    const char *name;
    Mode mode;
    std::int32_t MirrorManager::*delay;
    bool draws; // whether it draws random numbers
};

const Kind kinds[] = {
    {"match", &MirrorManager::mirrorModeMatch, &MirrorManager::matchFrameDelay, false},
    {"melt", &MirrorManager::mirrorModeMelt, &MirrorManager::meltFrameDelay, true},
    {"fade", &MirrorManager::mirrorModeFade, &MirrorManager::fadeFrameDelay, false},
    {"palette", &MirrorManager::mirrorModePalette, &MirrorManager::paletteFrameDelay, true},
};

class Modes : public ModeSteps, public testing::WithParamInterface<Kind> {
protected:
    const Mode mode = GetParam().mode;
    std::int32_t &delay = mirrorManager.*GetParam().delay;
};

TEST_P(Modes, AlreadyStoppedTheySeedAndRebuildTheGridAndNoMore) {
    lights({{1, {3}}});
    show(test::plainScreen(0xffffff));
    mirrorManager.running = false;
    const auto before = static_cast<unsigned>(std::time(nullptr));
    (mirrorManager.*mode)(1, sockets.get());
    const auto after = static_cast<unsigned>(std::time(nullptr));
    ASSERT_EQ(system.seeds.size(), GetParam().draws ? 1u : 0u);
    for (const unsigned seed : system.seeds) {
        EXPECT_GE(seed, before);
        EXPECT_LE(seed, after);
    }
    EXPECT_EQ(mirrorManager.samplePixels[0], 10 * 100 + 10);
    EXPECT_EQ(mirrorManager.samplePixels[6399], 89 * 100 + 89);
    EXPECT_TRUE(arrived(0).empty());
    EXPECT_TRUE(system.draws.empty());
    EXPECT_TRUE(mirrorManager.palette.empty());
}

TEST_P(Modes, SleepTheirDelayAfterEveryTurn) {
    const int usual = delay;
    for (const std::vector<Light> &devices : {std::vector<Light>{}, {{1, {3}}}})
        for (const int milliseconds : {usual, 1}) {
            delay = milliseconds;
            lights(devices);
            show(test::plainScreen(0));
            system.sleeps.clear();
            run(mode, [&](int turn) {
                show(test::plainScreen(0xff0000));
                return turn < 19;
            });
            EXPECT_EQ(system.sleeps, std::vector<std::chrono::nanoseconds>(
                                         20, std::chrono::milliseconds(milliseconds)));
        }
}

TEST_P(Modes, WithoutADelayTheyDoNotSleep) {
    lights({{1, {3}}});
    for (const int none : {0, -5}) {
        delay = none;
        show(test::plainScreen(0x0000ff));
        mirrorManager.running = true;
        std::thread thread([&] { (mirrorManager.*mode)(1, sockets.get()); });
        for (int i = 0; i < 20; ++i) {
            EXPECT_TRUE(receivers[0]->next());
            show(test::plainScreen(i % 2 == 0 ? 0x00ff00 : 0x0000ff));
        }
        writeFlag(mirrorManager.running, false);
        thread.join();
        receivers[0]->drain();
    }
    EXPECT_TRUE(system.sleeps.empty());
}

// A cycle that has begun sends to every device; a stop takes effect after the sleep.
TEST_P(Modes, AStopBeforeTheSleepEndsTheRunAfterIt) {
    lights({{1, {3}}, {2, {4}}});
    show(test::plainScreen(0xff0000));
    run(mode, [&](int) {
        show(test::plainScreen(0x00ff00)); // never read
        return false;
    });
    EXPECT_EQ(system.sleeps.size(), 1u);
    EXPECT_EQ(arrived(0).size(), 1u);
    EXPECT_EQ(arrived(1).size(), 1u);
}

TEST_P(Modes, WithoutDevicesACaptureIsConsumed) {
    lights({});
    show(test::plainScreen(0xff0000));
    mirrorManager.captureRequested = true;
    run(mode, [](int) { return false; });
    EXPECT_FALSE(mirrorManager.captureRequested);
    EXPECT_TRUE(mirrorManager.streamFrames.empty());
    EXPECT_TRUE(system.draws.empty());
}

INSTANTIATE_TEST_SUITE_P(All, Modes, testing::ValuesIn(kinds),
                         [](const auto &info) { return std::string(info.param.name); });

} // namespace
