#include "tests/tools/panelwall/walls.h"
#include "tools/panelwall/terminal/liveView.h"

#include <gtest/gtest.h>

using namespace panelwall;
using std::chrono::milliseconds;
using test::Bytes;
using test::start;

static constexpr int noTerminal = -1; // writing to it always fails

TEST(PanelwallRedrawPace, DrawsAtOnceAndThenByWhatChanges) {
    LiveView view(noTerminal);
    EXPECT_LE(view.due(false), start);
    view.draw(Wall({}), {}, {}, start);
    EXPECT_EQ(view.due(true), start + milliseconds(50));
    EXPECT_EQ(view.due(false), start + milliseconds(250));
    view.resize();
    EXPECT_LE(view.due(false), start);
}

// Simulates the program's loop while a panel fades for a second, with a clock that jumps to the
// next due time.
TEST(PanelwallRedrawPace, FollowsAPanelToItsColourAndNoFurther) {
    Wall wall(test::oneDevice(1, {{1, 100, 100}}));
    LiveView view(noTerminal);
    view.draw(wall, {}, {}, start);
    wall.receive(0, Bytes{1, 1, 1, 200, 0, 0, 0, 10}, start);

    std::vector<int> reds;
    bool changed = true;
    auto now = start;
    while (now = view.due(changed), now <= start + milliseconds(3000)) {
        changed = wall.isMoving(now);
        reds.push_back(wall.devices()[0].panels[0].shownAt(now)->red);
        view.draw(wall, {}, {}, now);
    }
    ASSERT_EQ(reds.size(), 28u); // twenty in the first second, then four a second
    for (int i = 0; i < 28; ++i)
        EXPECT_EQ(reds[static_cast<std::size_t>(i)], std::min((i + 1) * 10, 200)) << i;
}
