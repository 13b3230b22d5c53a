// Fade mode's transition time.
#include "tests/endToEnd/wallRun.h"

using test::Datagram;

namespace {

class Fade : public test::WallRun {};

TEST_F(Fade, AllPanelsFadeInTheSameTime) {
    startAtPoll(2, {{"127.0.57.31", 1, 0, 0.1, {{3, 20, 20}, {300, 80, 80}}},
                    {"127.0.57.32", 2, 1, 0.1, {{258, 50, 50}, {-1, 0, 0}}},
                    {"127.0.57.33", 0, 0, 0.1, {}}});
    show(test::plainScreen(0xff0000));
    EXPECT_EQ(receivers[0]->next(), (Datagram{2, 3, 1, 255, 0, 0, 0, 5, 44, 1, 255, 0, 0, 0, 5}));
    EXPECT_EQ(receivers[1]->next(),
              (Datagram{0, 2, 1, 2, 255, 0, 0, 0, 0, 5, 255, 255, 255, 0, 0, 0, 0, 5}));
    EXPECT_EQ(receivers[2]->next(), (Datagram{0, 0}));
    show(test::plainScreen(0));
    EXPECT_EQ(receivers[0]->next(), (Datagram{2, 3, 1, 0, 0, 0, 0, 5, 44, 1, 0, 0, 0, 0, 5}));
    EXPECT_EQ(receivers[1]->next(),
              (Datagram{0, 2, 1, 2, 0, 0, 0, 0, 0, 5, 255, 255, 0, 0, 0, 0, 0, 5}));
    EXPECT_EQ(receivers[2]->next(), (Datagram{0, 0}));
}

} // namespace
