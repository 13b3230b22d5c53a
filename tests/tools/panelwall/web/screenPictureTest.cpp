#include "tests/support/expectations.h"
#include "tests/support/files.h"
#include "tests/support/virtualScreen.h"
#include "tests/tools/panelwall/readPng.h"
#include "tests/tools/panelwall/web/httpClient.h"
#include "tools/panelwall/web/pageServer.h"

#include <CoreGraphics/CoreGraphics.h>
#include <gtest/gtest.h>

using namespace panelwall;

static std::uint32_t onlyDisplay() {
    CGDirectDisplayID display = 0;
    std::uint32_t count = 0;
    CGGetActiveDisplayList(1, &display, &count);
    return count == 1 ? display : 0;
}

// Decodes the picture like any PNG file.
static test::Picture decode(const std::string &png) {
    const test::Folder folder;
    return test::readPng(folder.write("screen.png", png));
}

TEST(PanelwallScreenPicture, IsOfTheDisplayAtItsSize) {
    test::VirtualScreen screen(301, 203);
    screen.use();
    screen.fill(0x102030);
    screen.fillRect(300, 202, 1, 1, 0xfedcba);
    const std::uint32_t display = onlyDisplay();
    const auto size = measureDisplay(display);
    ASSERT_TRUE(size);
    EXPECT_EQ(size->width, 301);
    EXPECT_EQ(size->height, 203);
    ScreenPicture picture(display);
    const auto shot = picture.take();
    ASSERT_TRUE(shot);
    EXPECT_EQ(shot->width, 301);
    const auto decoded = decode(shot->png);
    EXPECT_EQ(decoded.width, 301);
    EXPECT_EQ(decoded.height, 203);
    EXPECT_EQ(decoded.at(0, 0), 0x102030u);
    EXPECT_EQ(decoded.at(300, 202), 0xfedcbau);
}

TEST(PanelwallScreenPicture, OfAWideDisplayIsReduced) {
    test::VirtualScreen screen(4097, 10);
    screen.use();
    screen.fill(0x000000);
    screen.fillRect(0, 0, 3, 1, 0x900000);
    screen.fillRect(4095, 0, 2, 10, 0x0000ff);
    ScreenPicture picture(onlyDisplay());
    const auto shot = picture.take();
    ASSERT_TRUE(shot);
    EXPECT_EQ(shot->width, 4097);
    EXPECT_EQ(shot->height, 10);
    const auto decoded = decode(shot->png);
    ASSERT_EQ(decoded.width, 1366);
    ASSERT_EQ(decoded.height, 4);
    EXPECT_EQ(decoded.at(0, 0), 0x300000u); // red in one row of three
    EXPECT_EQ(decoded.at(1365, 3), 0x0000ffu);
}

TEST(PanelwallScreenPicture, IsNotTakenAnewForEveryAsker) {
    test::VirtualScreen screen(64, 48);
    screen.use();
    // Repeats when a busy machine takes too long for the two pictures.
    const auto now = std::chrono::steady_clock::now;
    for (auto begin = now();; begin = now()) {
        ScreenPicture picture(onlyDisplay());
        const auto first = picture.take();
        const auto second = picture.take();
        if (now() - begin >= ScreenPicture::leastAge)
            continue;
        EXPECT_EQ(first, second);
        break;
    }
}

TEST(PanelwallScreenPicture, IsServedToThoseWhoKnowTheAddress) {
    test::VirtualScreen screen(64, 48);
    screen.use();
    screen.fill(0x445566);
    LiveFeed feed;
    ScreenPicture picture(onlyDisplay());
    PageServer server(feed, picture);
    ASSERT_EQ(server.open("127.0.0.1", 0), "");
    const test::PageAddress address = test::addressIn(server.url());
    const std::string answer = test::get(address.port, address.root + "screen.png");
    EXPECT_EQ(test::statusOf(answer), 200);
    EXPECT_TRUE(test::contains(answer, "X-Screen-Size: 64x48"));
    EXPECT_EQ(decode(answer.substr(answer.find("\r\n\r\n") + 4)).at(5, 5), 0x445566u);
}
