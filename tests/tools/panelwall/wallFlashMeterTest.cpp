// The colours of a wall, at times that are made up.
#include "tools/wall/wallFlashMeter.h"
#include "tests/tools/panelwall/walls.h"
#include "tools/config/modes.h"

#include <functional>
#include <gtest/gtest.h>

using namespace panelwall;
using namespace std::chrono_literals;
using test::start;

namespace {

using Colours = std::vector<Colour>;

const Colour black{};
const Colour white{255, 255, 255};

config::Document wallOf(int rows, int columns) {
    std::vector<config::PanelEntry> panels;
    for (int i = 0; i < rows * columns; ++i)
        panels.push_back({i + 1, 100 * (i % columns), 100 * (i / columns)});
    return test::oneDevice(2, panels);
}

// Two seconds of a wall of panels in rows and columns, with a change every `every`.
WallFlashMeter measure(int rows, int columns, std::chrono::milliseconds every,
                       const std::function<Colour(int panel, int change)> &colourOf) {
    WallFlashMeter meter(wallOf(rows, columns));
    for (int change = 0; change * every < 2s; ++change) {
        Colours colours;
        for (int panel = 0; panel < rows * columns; ++panel)
            colours.push_back(colourOf(panel, change));
        meter.note(colours, start + change * every);
    }
    return meter;
}

Colour inTurns(int change, Colour one = white) {
    return change % 2 == 0 ? one : black;
}

} // namespace

TEST(PanelwallWallFlashMeter, MoreThanThreeFlashesAreAnExcess) {
    const auto together = [](int, int change) { return inTurns(change); };
    EXPECT_FALSE(measure(2, 4, 167ms, together).lastExcess());
    const WallFlashMeter meter = measure(2, 4, 149ms, together);
    EXPECT_EQ(meter.most(), 3.5);
    EXPECT_EQ(meter.lastExcess(), start + 13 * 149ms);
}

// They cancel out in every average.
TEST(PanelwallWallFlashMeter, PanelsThatFlashAgainstEachOtherAreSeen) {
    for (const auto &[rows, columns] : {std::pair(1, 2), {2, 2}, {2, 4}, {6, 8}})
        EXPECT_EQ(measure(rows, columns, 100ms,
                          [](int panel, int change) { return inTurns(panel + change); })
                      .most(),
                  5.0)
            << rows << " x " << columns;
}

// Each is slow.
TEST(PanelwallWallFlashMeter, PanelsThatFlashInTurnAreSeen) {
    const auto colourOf = [](int panel, int change) {
        return change % 4 == panel % 2 * 2 ? white : black;
    };
    EXPECT_EQ(measure(1, 8, 100ms, colourOf).most(), 5.0);
    EXPECT_EQ(measure(1, 1, 100ms, colourOf).most(), 0.0); // 2.5
}

TEST(PanelwallWallFlashMeter, SaturatedRedIsSeen) {
    const Colour dark{170, 0, 0}; // too dark to flash by its luminance
    EXPECT_LT(relativeLuminance(dark), 0.1);
    EXPECT_EQ(measure(2, 2, 100ms, [&](int, int change) { return inTurns(change, dark); }).most(),
              5.0);
    EXPECT_EQ(measure(2, 2, 100ms,
                      [](int, int change) {
                          return inTurns(change, {80, 80, 80});
                      })
                  .most(),
              0.0);
}

// Neighbours flash against each other, so that only the number of panels counts.
TEST(PanelwallWallFlashMeter, LessThanAQuarterOfThePanelsIsNotTheWall) {
    const auto most = [](int count) {
        return measure(10, 12, 100ms,
                       [count](int panel, int change) {
                           return panel < count ? inTurns(panel + change) : black;
                       })
            .most();
    };
    EXPECT_EQ(most(28), 0.0);
    EXPECT_EQ(most(30), 5.0);
}

TEST(PanelwallWallFlashMeter, AWallWithoutPanelsDoesNotFlash) {
    WallFlashMeter meter(wallOf(0, 0));
    meter.note({}, start);
    EXPECT_FALSE(meter.lastExcess());
}

// What mirrorctl check says of a mode is what this meter measures, however the panels are divided.
TEST(PanelwallWallFlashMeter, MeasuresWhatCheckSaysOfAMode) {
    for (const auto &[mode, frameDelay] : {std::pair(0, 42ms), {1, 99ms}, {2, 149ms}})
        for (const int division : {0, 1}) {
            const double most = measure(3, 4, frameDelay, [division](int panel, int change) {
                                    return inTurns(division * panel + change);
                                }).most();
            EXPECT_NEAR(most, config::maxFlashes(mode), 0.5) << mode;
            EXPECT_GT(most, config::harmlessFlashes) << mode;
        }
}
