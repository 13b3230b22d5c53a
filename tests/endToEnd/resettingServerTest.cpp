// A server that resets when its last client leaves, which is the default of servers. The library is
// its only client, so nearly every call meets a reset.
//
// The environment variable MIRROR_RESET_ROUNDS sets the number of rounds.
#include "tests/endToEnd/lightSetup.h"
#include "tests/platform/processUsage.h"
#include "tests/support/virtualScreen.h"

#include <cstdlib>

namespace {

int rounds() {
    const char *wanted = std::getenv("MIRROR_RESET_ROUNDS");
    return wanted != nullptr ? std::atoi(wanted) : 10;
}

class ResettingServer : public test::OneLightRun {
protected:
    ResettingServer() : OneLightRun("127.0.55.2") { screen.disconnect(); }

    // White after every reset; the library's own frame begins black.
    test::UsedScreen screen{200, 100, 24, {"-reset", "-wr"}};
};

TEST_F(ResettingServer, EveryRoundOfCallsIsServed) {
    [[maybe_unused]] const std::size_t descriptors = test::openDescriptors();
    const std::size_t threads = test::threads();
    for (int round = 1; round <= rounds(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        char list[256];
        ASSERT_EQ(getDisplays(list, sizeof list), 1);
        ASSERT_NE(std::string(list).find("\"width\":200,\"height\":100}"), std::string::npos)
            << list;
        const auto displays = test::displayIDs();
        ASSERT_EQ(displays.size(), 1u);
        ASSERT_EQ(configure(test::documentOf(displays.at(0), 0, {light})), 1);
        receiver.drain();
        ASSERT_EQ(startMirror(), 1);
        ASSERT_TRUE(test::arrives(receiver, plainDatagram(0xffffff), plainDatagram(0)));
        ASSERT_EQ(stopMirror(), 1);
    }
    EXPECT_TRUE(test::threadsBecome(threads));
#if !__has_feature(thread_sanitizer) // it starts a symboliser program
    EXPECT_EQ(test::openDescriptors(), descriptors);
#endif
}

} // namespace
