#include "tools/lightbridge/flashLimiter.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>

using namespace std::chrono_literals;
using lightbridge::Clock;
using lightbridge::Colour;
using lightbridge::FlashLimiter;

namespace {

using Wall = std::vector<Colour>;

const Colour black{};
const Colour white{255, 255, 255};
const Colour red{255, 0, 0};
const Clock::time_point start{std::chrono::hours(5)};
constexpr auto frame = 20ms;

config::Document wallOf(int rows, int columns) {
    config::DeviceEntry device{"127.0.47.30", 2, 0, 1.0, {}};
    for (int i = 0; i < rows * columns; ++i)
        device.panels.push_back({i + 1, 100 * (i % columns), 100 * (i / columns)});
    return {1, 0, {device}};
}

double averageOf(const Wall &wall, std::size_t first, std::size_t count) {
    double sum = 0.0;
    for (std::size_t i = first; i < first + count; ++i)
        sum += panelwall::relativeLuminance(wall[i]);
    return sum / static_cast<double>(count);
}

// What is left of four seconds of colours, a frame every 20 ms.
std::vector<Wall> limited(const config::Document &document,
                          const std::function<Wall(Clock::duration)> &coloursAt) {
    FlashLimiter limiter(document);
    std::vector<Wall> frames;
    for (auto time = 0ms; time < 4s; time += frame) {
        frames.push_back(coloursAt(time));
        limiter.limit(frames.back(), start + time);
    }
    return frames;
}

// The most flashes within a second of what `valueOf` gives for each frame.
double mostFlashes(const std::vector<Wall> &frames,
                   const std::function<double(const Wall &)> &valueOf) {
    panelwall::FlashMeter meter;
    auto now = start;
    for (const Wall &wall : frames) {
        meter.note(valueOf(wall), now);
        now += frame;
    }
    return meter.most();
}

bool isOn(Clock::duration time, double hertz) {
    return static_cast<int>(std::chrono::duration<double>(time).count() * 2.0 * hertz + 1e-6) % 2 ==
           0;
}

} // namespace

TEST(LightbridgeFlashLimiter, PassesUpToThreeFlashesOn) {
    const config::Document document = wallOf(1, 1);
    for (const double hertz : {0.5, 1.0, 2.0, 2.5, 2.75}) {
        FlashLimiter limiter(document);
        for (auto time = 0ms; time < 4s; time += frame) {
            Wall wall{isOn(time, hertz) ? white : black};
            const Wall wanted = wall;
            EXPECT_FALSE(limiter.limit(wall, start + time)) << hertz;
            EXPECT_EQ(wall, wanted) << hertz;
        }
    }
}

TEST(LightbridgeFlashLimiter, KeepsPanelsToThreeFlashes) {
    const config::Document document = wallOf(1, 1);
    for (const Colour bright : {white, red, Colour{0, 0, 255}, Colour{0, 160, 0}})
        for (double hertz = 3.5; hertz <= 20.0; hertz += 0.5) {
            const auto frames = limited(document, [&](Clock::duration time) {
                return Wall{isOn(time, hertz) ? bright : black};
            });
            const auto level = [](const Wall &wall) { return averageOf(wall, 0, 1); };
            EXPECT_LE(mostFlashes(frames, level), 3.0) << hertz;
            const auto redOf = [](const Wall &wall) { return wall[0].red / 255.0; };
            EXPECT_LE(mostFlashes(frames, redOf), 3.0) << hertz;
        }
}

// A red that is too dark to flash by its luminance.
TEST(LightbridgeFlashLimiter, KeepsSaturatedRedToThreeFlashes) {
    const config::Document document = wallOf(1, 1);
    const Colour dark{170, 0, 0};
    ASSERT_LT(panelwall::relativeLuminance(dark), 0.1);
    const auto frames = limited(
        document, [&](Clock::duration time) { return Wall{isOn(time, 8.0) ? dark : black}; });
    EXPECT_LE(mostFlashes(frames, [](const Wall &wall) { return wall[0].red / 255.0; }), 3.0);
    const auto unsaturated = limited(document, [&](Clock::duration time) {
        return Wall{isOn(time, 8.0) ? Colour{130, 80, 0} : Colour{100, 60, 0}};
    });
    EXPECT_GT(std::count(unsaturated.begin(), unsaturated.end(), Wall{{130, 80, 0}}), 90);
}

// They cancel out in the average.
TEST(LightbridgeFlashLimiter, SeesPanelsThatFlashAgainstEachOther) {
    const config::Document document = wallOf(2, 4);
    const auto frames = limited(document, [](Clock::duration time) {
        Wall wall(8);
        for (std::size_t i = 0; i < wall.size(); ++i)
            wall[i] = isOn(time, 10.0) == (i % 2 == 0) ? white : black;
        return wall;
    });
    for (std::size_t i = 0; i < 8; ++i)
        EXPECT_LE(mostFlashes(frames, [i](const Wall &wall) { return averageOf(wall, i, 1); }),
                  3.0);
}

// Each panel is slow, and the wall is not.
TEST(LightbridgeFlashLimiter, SeesPanelsThatFlashInTurn) {
    const config::Document document = wallOf(1, 8);
    const auto coloursAt = [](Clock::duration time) {
        Wall wall(8);
        for (std::size_t i = 0; i < wall.size(); ++i)
            wall[i] = (time + i % 2 * 250ms) % 500ms < 100ms ? white : black;
        return wall;
    };
    std::vector<Wall> before;
    for (auto time = 0ms; time < 4s; time += frame)
        before.push_back(coloursAt(time));
    const auto quarter = [](const Wall &wall) { return averageOf(wall, 0, 2); };
    EXPECT_EQ(mostFlashes(before, [](const Wall &wall) { return averageOf(wall, 0, 1); }), 2.0);
    EXPECT_EQ(mostFlashes(before, quarter), 4.0);
    EXPECT_LE(mostFlashes(limited(document, coloursAt), quarter), 3.0);
}

TEST(LightbridgeFlashLimiter, ShowsTheColoursInTheEnd) {
    for (const auto &[rows, columns] : {std::pair(1, 1), {3, 5}, {1, 9}, {9, 1}}) {
        const config::Document document = wallOf(rows, columns);
        FlashLimiter limiter(document);
        const auto count = static_cast<std::size_t>(rows * columns);
        auto time = start;
        for (int i = 0; i < 50; ++i, time += frame) {
            Wall wall(count, i % 2 == 0 ? white : black);
            limiter.limit(wall, time);
        }
        Wall wall(count, red);
        const auto since = time;
        while (limiter.limit(wall, time) && time < since + 2s) {
            time += frame;
            std::fill(wall.begin(), wall.end(), red);
        }
        EXPECT_LE(time - since, 1s + frame);
        EXPECT_EQ(wall, Wall(count, red));
    }
}

TEST(LightbridgeFlashLimiter, TakesAWallWithoutPanels) {
    FlashLimiter limiter(wallOf(0, 0));
    EXPECT_FALSE(limiter.limit({}, start));
}
