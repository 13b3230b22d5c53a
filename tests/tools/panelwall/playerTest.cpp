#include "tools/panelwall/player.h"
#include "tests/tools/panelwall/recordings.h"

#include <gtest/gtest.h>
#include <sstream>
#include <thread>

using namespace test;
using panelwall::Clock;
using panelwall::Player;
using std::chrono::microseconds;

namespace {

const auto nothing = [](std::size_t, std::span<const std::uint8_t>, Clock::time_point) {};

} // namespace

TEST(PanelwallPlayer, PlaysEachDatagramAtItsTime) {
    auto input = std::make_unique<std::istringstream>(record(
        wideDevices({"127.0.45.1"}),
        {{0, microseconds(0), panelOne(1)}, {0, microseconds(30'000), panelOne(2)}}, 50'000));
    panelwall::RecordingReader reader(std::move(input));
    ASSERT_EQ(reader.error(), "");
    const Clock::time_point begin = Clock::now();
    Player player(reader, 1.0, nullptr);
    std::vector<Clock::time_point> heard;
    const auto receive = [&](std::size_t, std::span<const std::uint8_t> bytes,
                             Clock::time_point at) {
        EXPECT_EQ(bytes[4], heard.size() + 1);
        heard.push_back(at);
    };
    EXPECT_LT(player.due(), Clock::now());
    while (!player.ended()) {
        std::this_thread::sleep_until(player.due());
        player.playDue(receive);
    }
    ASSERT_EQ(heard.size(), 2u);
    EXPECT_GE(heard[1] - begin, std::chrono::milliseconds(30));
    EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(50));
}

// Otherwise a loop that waits until the player is due would never sleep again.
TEST(PanelwallPlayer, IsNeverDueAfterItsEnd) {
    const std::string whole = record(wideDevices({"127.0.45.1"}), {}, 0);
    for (const std::string &bytes : {whole, whole.substr(0, whole.size() - 1)}) {
        panelwall::RecordingReader reader(std::make_unique<std::istringstream>(bytes));
        ASSERT_EQ(reader.error(), "");
        Player player(reader, 1.0, nullptr);
        EXPECT_FALSE(player.ended());
        EXPECT_FALSE(player.playDue(nothing));
        EXPECT_TRUE(player.ended());
        EXPECT_EQ(player.due(), Clock::time_point::max());
    }
}

TEST(PanelwallPlayer, TheSlowestReplayStaysWithinTheClock) {
    auto input = std::make_unique<std::istringstream>(record(
        wideDevices({"127.0.45.1"}), {{0, std::chrono::hours(24 * 365 * 90), panelOne(1)}}, 0));
    panelwall::RecordingReader reader(std::move(input));
    ASSERT_EQ(reader.error(), "");
    Player player(reader, 0.001, nullptr);
    EXPECT_FALSE(player.playDue(nothing));
    EXPECT_GT(player.due(), Clock::now() + std::chrono::hours(24 * 365));
    EXPECT_LT(player.due(), Clock::time_point::max());
}
