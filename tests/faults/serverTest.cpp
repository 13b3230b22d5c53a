// The X server killed during a run and restarted under the same name.
#include "tests/faults/faultRun.h"

namespace {

class Server : public test::FaultRun {};

TEST_F(Server, BackUnderItsNameServesANewConfiguration) {
    screen.fill(0xff0000);
    start();
    ASSERT_TRUE(showsPlain(0xff0000));
    for (const std::uint32_t colour : {0x00ff00u, 0x0000ffu, 0xffffffu}) {
        screen.kill();
        receiver.drain();
        EXPECT_TRUE(receiver.next()); // the last frame is kept
        EXPECT_TRUE(test::displayIDs().empty());
        screen.restart();
        screen.fill(colour);
        start(); // the configuration ends the run over the lost server
        EXPECT_TRUE(showsPlain(colour));
    }
}

// A host that does not notice the loss only has to configure and start again.
TEST_F(Server, ARunThatOutlivesItsServerEndsAndTheNextOneNeedsOnlyTheConfiguration) {
    screen.fill(0xff0000);
    start();
    ASSERT_TRUE(showsPlain(0xff0000));
    screen.kill();
    screen.restart();
    screen.fill(0x00ff00);
    receiver.drain();
    for (int i = 0; i < 5; ++i) // a stream ends with its server
        EXPECT_EQ(receiver.next(), plainDatagram(0xff0000));
    EXPECT_EQ(stopMirror(), 1);
    start();
    EXPECT_TRUE(showsPlain(0x00ff00));
}

} // namespace
