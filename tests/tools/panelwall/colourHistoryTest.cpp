#include "tools/wall/colourHistory.h"
#include "tests/tools/panelwall/walls.h"

#include <gtest/gtest.h>

using namespace panelwall;

// A time on the border of two slots.
static const Clock::time_point start =
    Clock::time_point(ColourHistory::slotLength * std::int64_t{1'000'000});

static void noteRed(ColourHistory &history, Clock::duration after, std::uint8_t red) {
    history.note(start + after, [red](std::size_t) { return Colour{red, 0, 0}; });
}

TEST(PanelwallColourHistory, HasAnEntryForEachSlotWithAColour) {
    ColourHistory history(1, 10);
    noteRed(history, std::chrono::milliseconds(0), 1);
    noteRed(history, std::chrono::milliseconds(39), 2);
    noteRed(history, std::chrono::milliseconds(42), 3);
    noteRed(history, std::chrono::milliseconds(200), 4);
    ASSERT_EQ(history.entries().size(), 3u);
    EXPECT_EQ(history.entries()[0].slot, 1'000'000);
    EXPECT_EQ(history.entries()[0].rows[0], (Colour{2, 0, 0}));
    EXPECT_EQ(history.entries()[1].slot, 1'000'001);
    EXPECT_EQ(history.entries()[2].slot, 1'000'005);
    EXPECT_EQ(history.entries()[2].rows[0], (Colour{4, 0, 0}));
}

TEST(PanelwallColourHistory, ForgetsWhatIsOverAMinuteOldButNotWhatItShowed) {
    ColourHistory history(1, 10);
    noteRed(history, std::chrono::seconds(0), 1);
    noteRed(history, std::chrono::seconds(1), 2);
    noteRed(history, std::chrono::seconds(70), 3);
    ASSERT_EQ(history.entries().size(), 2u);
    EXPECT_EQ(history.entries()[0].rows[0], (Colour{2, 0, 0}));
    EXPECT_EQ(history.entries()[1].rows[0], (Colour{3, 0, 0}));
}

TEST(PanelwallColourHistory, IsBoundedInAFlood) {
    ColourHistory history(1, 10);
    for (int i = 0; i < 200'000; ++i)
        noteRed(history, std::chrono::milliseconds(i), 1);
    EXPECT_LE(history.entries().size(), 1501u);
}

TEST(PanelwallColourHistory, ChoosesRowsEvenly) {
    EXPECT_EQ(ColourHistory(3, 10).rowPanels(), (std::vector<std::size_t>{0, 1, 2}));
    EXPECT_EQ(ColourHistory(9, 3).rowPanels(), (std::vector<std::size_t>{0, 3, 6}));
    EXPECT_TRUE(ColourHistory(0, 3).rowPanels().empty());
}

TEST(PanelwallColourHistory, OfTheWallHoldsWhatDevicesWereSent) {
    config::Document document = test::oneDevice(2, {{1, 0, 0}, {2, 0, 0}});
    document.devices.push_back(document.devices[0]);
    Wall wall(document);
    wall.receive(0, test::Bytes{0, 1, 0, 1, 1, 1, 1, 0, 0, 5}, start);
    EXPECT_FALSE(wall.devices()[0].history);
    wall.keepHistory(2);
    wall.receive(0, test::Bytes{0, 1, 0, 2, 7, 8, 9, 0, 0, 5}, start);
    wall.receive(0, test::Bytes{1}, start + ColourHistory::slotLength);
    ASSERT_TRUE(wall.devices()[0].history);
    EXPECT_EQ(wall.devices()[0].history->rowPanels().size(), 1u);
    ASSERT_EQ(wall.devices()[0].history->entries().size(), 1u);
    EXPECT_EQ(wall.devices()[0].history->entries()[0].rows[0], (Colour{1, 1, 1}));
    EXPECT_TRUE(wall.devices()[1].history->entries().empty());
}
