// A server with two screens, which have monitors of the same name.
#include "platform/objects/displayIds.h"
#include "tests/platform/streamProbe.h"
#include "tests/support/virtualScreen.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace {

class ServerScreens : public testing::Test {
protected:
    void select(int screen) const {
        setenv("DISPLAY", (server.display() + "." + std::to_string(screen)).c_str(), 1);
    }
    CGDirectDisplayID displayOf(int screen) const {
        select(screen);
        return test::onlyDisplay();
    }
    void fillSecond(const std::string &colour) const {
        server.run({"xsetroot", "-display", server.display() + ".1", "-solid", colour});
    }

    test::VirtualScreen server{320, 200, 24, {"-screen", "1", "200x120x24"}};
};

} // namespace

TEST_F(ServerScreens, HaveDisplaysOfDifferentIdentifiers) {
    const CGDirectDisplayID first = displayOf(0);
    const CGDirectDisplayID second = displayOf(1);
    EXPECT_NE(first, 0u);
    EXPECT_NE(second, 0u);
    EXPECT_NE(first, second);
    // Existing configurations hold the identifier of the first screen.
    EXPECT_EQ(first, platform::displayIdsOf({"screen"}).at(0));
    setenv("DISPLAY", server.display().c_str(), 1);
    EXPECT_EQ(test::onlyDisplay(), first);
}

TEST_F(ServerScreens, AreCapturedEachForItself) {
    server.fill(0xff2010);
    fillSecond("#1020ff");
    const CGDirectDisplayID second = displayOf(1);
    test::StreamProbe secondStream(second, 200, 120);
    ASSERT_EQ(secondStream.start(), kCGErrorSuccess);
    const CGDirectDisplayID first = displayOf(0);
    test::StreamProbe firstStream(first, 320, 200);
    ASSERT_EQ(firstStream.start(), kCGErrorSuccess);
    EXPECT_TRUE(firstStream.waitForPixel(319, 199, 0xff2010));
    EXPECT_TRUE(secondStream.waitForPixel(199, 119, 0x1020ff));
    server.fill(0x30ff40);
    EXPECT_TRUE(firstStream.waitForPixel(319, 199, 0x30ff40));
    fillSecond("#405060");
    EXPECT_TRUE(secondStream.waitForPixel(199, 119, 0x405060));
    EXPECT_EQ(firstStream.latestFrame().at(0, 0), 0x30ff40u);
}

TEST_F(ServerScreens, AreNotTakenForEachOther) {
    const CGDirectDisplayID first = displayOf(0);
    const CGDirectDisplayID second = displayOf(1);
    EXPECT_EQ(test::StreamProbe(first, 320, 200).get(), nullptr);
    select(0);
    EXPECT_EQ(test::StreamProbe(second, 200, 120).get(), nullptr);
}
