// Melt mode only: the random transition times.
#include "tests/mirror/modeSteps.h"

#include <limits>

using test::Datagram;
using test::Record;

namespace {

class MeltMode : public ModeSteps {
protected:
    // Runs melt mode over plain screens of these colours, one per poll, and ends after the last.
    void melt(const std::vector<std::uint32_t> &colours) {
        show(test::plainScreen(colours[0]));
        run(&MirrorManager::mirrorModeMelt, [&](int poll) {
            const std::size_t next = static_cast<std::size_t>(poll) + 1;
            if (next == colours.size())
                return false;
            show(test::plainScreen(colours[next]));
            return true;
        });
    }

    // The transition times sent to light `d`, datagram by datagram.
    std::vector<std::vector<int>> times(int d) {
        std::vector<std::vector<int>> all_;
        for (const Datagram &datagram : arrived(d)) {
            all_.emplace_back();
            for (const Record &record :
                 test::decode(all[static_cast<std::size_t>(d)].controlVersion, datagram))
                all_.back().push_back(record.transition);
        }
        return all_;
    }

    // Returns these numbers, one per draw.
    void script(std::vector<int> numbers) {
        system.draw = [numbers, next = std::size_t{0}]() mutable {
            return next < numbers.size() ? numbers[next++] : 0;
        };
    }

    using Times = std::vector<std::vector<int>>;
};

TEST_F(MeltMode, OneDrawAPanelDeviceByDevice) {
    lights({{1, {1, 2, 3}}, {1, {}}, {2, {}}, {2, {4, 5}}});
    script({0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
    melt({0xff0000, 0x00ff00});
    EXPECT_EQ(system.seeds.size(), 1u);
    EXPECT_EQ(system.draws.size(), 10u);
    EXPECT_EQ(times(0), (Times{{2, 3, 4}, {7, 8, 9}}));
    EXPECT_EQ(times(1), (Times{{}, {}}));
    EXPECT_EQ(times(2), (Times{{}, {}}));
    EXPECT_EQ(times(3), (Times{{5, 6}, {10, 2}}));
}

TEST_F(MeltMode, NoDrawsWhileHolding) {
    lights({{1, {1, 2, 3}}});
    melt({0, 0, 0, 0xff0000, 0xff0000, 0xff0000});
    EXPECT_EQ(system.draws.size(), 3u);
}

TEST_F(MeltMode, RemainderPlusLeast) {
    lights({{1, {1, 2, 3}}, {2, {4, 5}}});
    const int most = std::numeric_limits<int>::max();
    script({8, 9, most, 1000003, 17});
    melt({0xff0000});
    EXPECT_EQ(times(0), (Times{{10, 2, most % 9 + 2}}));
    EXPECT_EQ(times(1), (Times{{1000003 % 9 + 2, 10}}));
}

TEST_F(MeltMode, TuningDecidesTheRange) {
    lights({{1, {1, 2}}, {2, {4, 5}}});
    mirrorManager.meltTransitionTimeMin = 300;
    mirrorManager.meltTransitionTimeRange = 1000;
    script({0, 999, 0, 1999});
    melt({0xff0000});
    EXPECT_EQ(times(0), (Times{{300 % 256, 1299 % 256}})); // the low byte
    EXPECT_EQ(times(1), (Times{{300, 1299}}));
    mirrorManager.meltTransitionTimeMin = -1;
    mirrorManager.meltTransitionTimeRange = 1;
    script({});
    melt({0x00ff00});
    EXPECT_EQ(times(0), (Times{{255, 255}}));
    EXPECT_EQ(times(1), (Times{{65535, 65535}}));
}

// With the system's random numbers: all nine times occur and no others, and panels differ.
TEST_F(MeltMode, TwoToTen) {
    std::vector<int> ids(60);
    lights({{1, ids}, {2, ids}});
    std::vector<std::uint32_t> colours;
    for (int i = 0; i < 20; ++i)
        colours.push_back(i % 2 == 0 ? 0xff0000 : 0x00ff00);
    melt(colours);
    std::vector<int> seen(11);
    for (int d = 0; d < 2; ++d)
        for (const std::vector<int> &datagram : times(d))
            for (const int time : datagram) {
                ASSERT_GE(time, 2);
                ASSERT_LE(time, 10);
                ++seen[static_cast<std::size_t>(time)];
            }
    for (int time = 2; time <= 10; ++time)
        EXPECT_GT(seen[static_cast<std::size_t>(time)], 0) << time;
    EXPECT_EQ(system.draws.size(), 20u * 120);
}

// Complete datagrams, byte by byte.
TEST_F(MeltMode, WholeDatagrams) {
    lights({{1, {3, 300}}, {2, {258, -1}}});
    script({1, 2, 3, 4});
    melt({0xff0000});
    EXPECT_EQ(arrived(0),
              (std::vector<Datagram>{{2, 3, 1, 255, 0, 0, 0, 3, 44, 1, 255, 0, 0, 0, 4}}));
    EXPECT_EQ(arrived(1), (std::vector<Datagram>{
                              {0, 2, 1, 2, 255, 0, 0, 0, 0, 5, 255, 255, 255, 0, 0, 0, 0, 6}}));
}

// A request that arrives while a frame is being built is too late for that frame.
TEST_F(MeltMode, ACaptureAskedForInMidFrameTakesTheNextOne) {
    lights({{1, {1}}, {2, {2}}});
    int drawn = 0;
    system.draw = [&] {
        if (++drawn == 1)
            writeFlag(mirrorManager.captureRequested, true);
        return 0;
    };
    show(test::plainScreen(0xff0000));
    run(&MirrorManager::mirrorModeMelt, [&](int poll) {
        if (poll == 0) {
            EXPECT_TRUE(readFlag(mirrorManager.captureRequested));
            EXPECT_TRUE(mirrorManager.streamFrames.empty());
            show(test::plainScreen(0x0000ff));
        }
        return poll < 1;
    });
    EXPECT_FALSE(mirrorManager.captureRequested);
    EXPECT_EQ(mirrorManager.streamFrames,
              (std::vector<std::string>{"1 1 1 0 1 255 0 5", "1 2 1 0 1 255 0 5"}));
}

// Once accepted, a request holds for the whole frame.
TEST_F(MeltMode, ACaptureWithdrawnInMidFrameIsStillTaken) {
    lights({{1, {1}}, {2, {2}}});
    system.draw = [&] {
        writeFlag(mirrorManager.captureRequested, false);
        return 0;
    };
    mirrorManager.captureRequested = true;
    melt({0xff0000});
    EXPECT_EQ(mirrorManager.streamFrames.size(), 2u);
}

} // namespace
