#include "tests/platform/streamProbe.h"
#include "tests/support/virtualScreen.h"

#include <CoreGraphics/CoreGraphics.h>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <set>

using test::VirtualScreen;

namespace {

std::vector<CGDirectDisplayID> activeDisplays() {
    std::array<CGDirectDisplayID, 32> ids{};
    std::uint32_t count = 0;
    EXPECT_EQ(CGGetActiveDisplayList(32, ids.data(), &count), kCGErrorSuccess);
    return {ids.begin(), ids.begin() + count};
}

void setMonitor(const VirtualScreen &screen, const std::string &name, const std::string &geometry) {
    screen.run({"xrandr", "--setmonitor", name, geometry, "none"});
}

} // namespace

TEST(DisplayList, IdentifiersOutliveTheServer) {
    std::vector<CGDirectDisplayID> before;
    std::vector<CGDirectDisplayID> after;
    {
        const VirtualScreen screen(320, 200);
        screen.use();
        setMonitor(screen, "left", "160/40x200/50+0+0");
        setMonitor(screen, "right", "160/40x200/50+160+0");
        before = activeDisplays();
    }
    {
        // Atoms and the order of things differ in the second server's life.
        const VirtualScreen screen(640, 400);
        screen.use();
        screen.run({"xprop", "-root", "-f", "SOMETHING_ELSE", "8s", "-set", "SOMETHING_ELSE", "x"});
        setMonitor(screen, "right", "160/40x200/50+160+0");
        setMonitor(screen, "left", "160/40x200/50+0+0");
        after = activeDisplays();
    }
    ASSERT_EQ(before.size(), 3u);
    ASSERT_EQ(after.size(), 3u);
    EXPECT_EQ(std::multiset<CGDirectDisplayID>(before.begin(), before.end()),
              std::multiset<CGDirectDisplayID>(after.begin(), after.end()));
    for (const CGDirectDisplayID id : after)
        EXPECT_GT(static_cast<std::int32_t>(id), 0);
}

TEST(DisplayList, KeepsTheServersOrderAndFollowsChanges) {
    const VirtualScreen screen(320, 200);
    screen.use();
    setMonitor(screen, "b", "160/40x200/50+0+0");
    const auto one = activeDisplays();
    ASSERT_EQ(one.size(), 2u);
    setMonitor(screen, "a", "160/40x200/50+160+0");
    const auto two = activeDisplays();
    ASSERT_EQ(two.size(), 3u);
    EXPECT_EQ(two.at(0), one.at(0));
    screen.run({"xrandr", "--delmonitor", "b"});
    const auto left = activeDisplays();
    ASSERT_EQ(left.size(), 2u);
    EXPECT_EQ(left.at(0), two.at(1));
}

TEST(DisplayList, CapacityBoundsTheListButNotTheBareCount) {
    const VirtualScreen screen(320, 200);
    screen.use();
    for (int i = 0; i < 11; ++i)
        setMonitor(screen, "m" + std::to_string(i), "100/10x100/10+0+0");

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
    const VirtualScreen screen(320, 200, 24, {"-extension", "RANDR"});
    screen.use();
    std::uint32_t count = 7;
    EXPECT_NE(CGGetActiveDisplayList(10, nullptr, &count), kCGErrorSuccess);
    EXPECT_EQ(count, 0u);
}

TEST(DisplayList, AHungServerCostsSecondsAtMost) {
    const VirtualScreen screen(320, 200);
    screen.use();
    const CGDirectDisplayID id = test::onlyDisplay();
    kill(screen.pid(), SIGSTOP);
    const auto before = std::chrono::steady_clock::now();
    std::uint32_t count = 7;
    EXPECT_NE(CGGetActiveDisplayList(10, nullptr, &count), kCGErrorSuccess);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(CGDisplayCreateImage(id), nullptr);
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(10));
    kill(screen.pid(), SIGCONT);
    EXPECT_EQ(activeDisplays().size(), 1u);
}
