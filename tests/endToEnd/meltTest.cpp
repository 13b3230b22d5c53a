// Melt mode's transition times.
#include "tests/endToEnd/systemRandom.h"
#include "tests/endToEnd/wallRun.h"

#include <algorithm>

namespace {

class Melt : public test::WallRun {
protected:
    // Whether the generator was seeded with the start time in seconds, and only these times drew
    // from it.
    bool areDrawn(const std::vector<int> &times) const {
        return seedThat([&](unsigned seed) {
                   test::SystemRandom random(seed);
                   return std::all_of(times.begin(), times.end(),
                                      [&](int time) { return time == random.draw() % 9 + 2; });
               })
            .has_value();
    }
};

// Each panel has its own transition time, drawn light by light and panel by panel.
TEST_F(Melt, EveryPanelMeltsInItsOwnTime) {
    startAtPoll(1, {{"127.0.57.21", 1, 0, 0.1, test::panels(1, 30)},
                    {"127.0.57.22", 2, 0, 0.1, {}},
                    {"127.0.57.23", 2, 1, 0.1, test::panels(300, 25)},
                    {"127.0.57.24", 1, 0, 0.1, test::panels(100, 1)}});
    std::vector<int> times;
    for (int change = 0; change < 12; ++change) {
        show(test::plainScreen(change % 2 == 0 ? 0xff0000 : 0x00ff00));
        const auto frame = nextFrame();
        ASSERT_EQ(frame.size(), lights.size());
        for (std::size_t d = 0; d < lights.size(); ++d) {
            ASSERT_EQ(frame[d].size(), lights[d].panels.size());
            for (std::size_t p = 0; p < frame[d].size(); ++p) {
                EXPECT_EQ(frame[d][p].id, lights[d].panels[p].id);
                times.push_back(frame[d][p].transition);
            }
        }
    }
    expectNothing();
    std::vector<int> seen(11);
    for (const int time : times) {
        ASSERT_GE(time, 2);
        ASSERT_LE(time, 10);
        ++seen[static_cast<std::size_t>(time)];
    }
    for (int time = 2; time <= 10; ++time)
        EXPECT_GT(seen[static_cast<std::size_t>(time)], 0) << time;
    EXPECT_TRUE(areDrawn(times));
}

TEST_F(Melt, ARunStartsFromBlackAndSeedsAnew) {
    for (int run = 0; run < 2; ++run) {
        startAtPoll(1, {{"127.0.57.21", 1, 0, 0.1, test::panels(1, 40)}});
        show(test::plainScreen(0x0000ff));
        const auto frame = nextFrame();
        ASSERT_EQ(frame.size(), 1u);
        ASSERT_EQ(frame[0].size(), 40u);
        std::vector<int> times;
        for (const test::Record &record : frame[0])
            times.push_back(record.transition);
        EXPECT_TRUE(areDrawn(times));
        pollFreely();
        ASSERT_EQ(stopMirror(), 1);
        expectNothing();
    }
}

} // namespace
