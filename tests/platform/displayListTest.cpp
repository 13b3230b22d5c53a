#include "tests/platform/streamProbe.h"
#include "tests/support/virtualScreen.h"

#include <CoreGraphics/CoreGraphics.h>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <set>

using test::UsedScreen;

TEST(DisplayList, IdentifiersOutliveTheServer) {
    std::vector<CGDirectDisplayID> before;
    std::vector<CGDirectDisplayID> after;
    {
        const UsedScreen screen(320, 200);
        test::addMonitor(screen, "160/40x200/50+0+0", "left");
        test::addMonitor(screen, "160/40x200/50+160+0", "right");
        before = test::activeDisplays();
    }
    {
        // Atoms and the order of the monitors differ in the second server.
        const UsedScreen screen(640, 400);
        screen.run({"xprop", "-root", "-f", "SOMETHING_ELSE", "8s", "-set", "SOMETHING_ELSE", "x"});
        test::addMonitor(screen, "160/40x200/50+160+0", "right");
        test::addMonitor(screen, "160/40x200/50+0+0", "left");
        after = test::activeDisplays();
    }
    ASSERT_EQ(before.size(), 3u);
    ASSERT_EQ(after.size(), 3u);
    EXPECT_EQ(std::multiset<CGDirectDisplayID>(before.begin(), before.end()),
              std::multiset<CGDirectDisplayID>(after.begin(), after.end()));
    for (const CGDirectDisplayID id : after)
        EXPECT_GT(static_cast<std::int32_t>(id), 0);
}

TEST(DisplayList, KeepsTheServersOrderAndFollowsChanges) {
    const UsedScreen screen(320, 200);
    test::addMonitor(screen, "160/40x200/50+0+0", "b");
    const auto one = test::activeDisplays();
    ASSERT_EQ(one.size(), 2u);
    test::addMonitor(screen, "160/40x200/50+160+0", "a");
    const auto two = test::activeDisplays();
    ASSERT_EQ(two.size(), 3u);
    EXPECT_EQ(two.at(0), one.at(0));
    screen.run({"xrandr", "--delmonitor", "b"});
    const auto left = test::activeDisplays();
    ASSERT_EQ(left.size(), 2u);
    EXPECT_EQ(left.at(0), two.at(1));
}

TEST(DisplayList, CapacityBoundsTheListButNotTheBareCount) {
    const UsedScreen screen(320, 200);
    for (int i = 0; i < 11; ++i)
        test::addMonitor(screen, "100/10x100/10+0+0", "m" + std::to_string(i));

    std::uint32_t count = 99;
    EXPECT_EQ(CGGetActiveDisplayList(10, nullptr, &count), kCGErrorSuccess);
    EXPECT_EQ(count, 12u);
    std::array<CGDirectDisplayID, 11> ids{};
    EXPECT_EQ(CGGetActiveDisplayList(10, ids.data(), &count), kCGErrorSuccess);
    EXPECT_EQ(count, 10u);
    EXPECT_NE(ids[9], 0u);
    EXPECT_EQ(ids[10], 0u);
    EXPECT_EQ(CGGetActiveDisplayList(0, ids.data(), &count), kCGErrorSuccess);
    EXPECT_EQ(count, 0u);
    EXPECT_NE(CGGetActiveDisplayList(10, ids.data(), nullptr), kCGErrorSuccess);
}

TEST(DisplayList, WithoutAServerIsEmptyAndAnError) {
    for (const char *display : {"", ":97531", "nonsense", "127.0.0.1:999", "/nowhere:1"}) {
        setenv("DISPLAY", display, 1);
        std::uint32_t count = 7;
        EXPECT_NE(CGGetActiveDisplayList(10, nullptr, &count), kCGErrorSuccess) << display;
        EXPECT_EQ(count, 0u) << display;
    }
    unsetenv("DISPLAY");
    std::uint32_t count = 7;
    CGDirectDisplayID id = 0;
    EXPECT_NE(CGGetActiveDisplayList(1, &id, &count), kCGErrorSuccess);
    EXPECT_EQ(count, 0u);
}

TEST(DisplayList, AServerWithoutMonitorsIsAnError) {
    const UsedScreen screen(320, 200, 24, {"-extension", "RANDR"});
    std::uint32_t count = 7;
    EXPECT_NE(CGGetActiveDisplayList(10, nullptr, &count), kCGErrorSuccess);
    EXPECT_EQ(count, 0u);
}

TEST(DisplayList, AHungServerCostsSecondsAtMost) {
    const UsedScreen screen(320, 200);
    const CGDirectDisplayID id = test::onlyDisplay();
    kill(screen.pid(), SIGSTOP);
    const auto before = std::chrono::steady_clock::now();
    std::uint32_t count = 7;
    EXPECT_NE(CGGetActiveDisplayList(10, nullptr, &count), kCGErrorSuccess);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(CGDisplayCreateImage(id), nullptr);
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(10));
    kill(screen.pid(), SIGCONT);
    EXPECT_EQ(test::activeDisplays().size(), 1u);
}
