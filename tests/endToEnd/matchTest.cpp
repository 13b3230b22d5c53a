#include "mirror/mirrorInterface.h"
#include "tests/endToEnd/lightSetup.h"
#include "tests/support/virtualScreen.h"

#include <cstdlib>
#include <memory>
#include <rapidjson/document.h>

using test::arrives;
using test::Datagram;
using test::LightReceiver;
using test::LightSetup;
using test::matchDatagram;
using test::Picture;

namespace {

// Lights of control versions 1 and 2, and one on IPv6; panels in the middle, at every edge, and
// small ones.
std::vector<LightSetup> wall(int width, int height) {
    return {
        {"127.0.54.1", 1, 0, 0.5, {{3, 100, 90}, {300, 5, 5}, {7, width - 4, height - 4}}},
        {"127.0.54.2", 2, 1, 1.25, {{258, width / 2, height / 2}, {-1, 0, height - 1}}},
        {"::1", 0, 0, 0.05, {{1, 20, 30}, {65537, 200, 100}, {2, width - 1, 0}, {4, 33, 44}}},
    };
}

class Match : public testing::Test {
protected:
    void TearDown() override { stopMirror(); }

    // Configures these lights, listens to each and starts.
    void start(std::uint32_t display, const std::vector<LightSetup> &wanted) {
        lights = wanted;
        receivers.clear();
        for (const LightSetup &light : lights)
            receivers.push_back(std::make_unique<LightReceiver>(light.ip, light.port()));
        std::string document = test::documentOf(display, 0, lights);
        ASSERT_EQ(setMirrorConfig(document.data()), 1);
        ASSERT_EQ(startMirror(), 1);
    }

    void expectEverywhere(const Picture &now, const Picture &before) {
        for (std::size_t d = 0; d < lights.size(); ++d)
            EXPECT_TRUE(arrives(*receivers[d], matchDatagram(lights[d], now),
                                matchDatagram(lights[d], before)))
                << lights[d].ip;
    }

    std::vector<LightSetup> lights;
    std::vector<std::unique_ptr<LightReceiver>> receivers;
};

void draw(test::VirtualScreen &screen, const Picture &picture, int x = 0, int y = 0) {
    screen.putPixels(x, y, picture.width, picture.height, picture.pixels.data());
}

TEST_F(Match, EveryByteOfEveryDatagram) {
    test::UsedScreen screen(641, 363); // odd, so that a padded row would shear the picture
    const Picture black = test::plain(641, 363, 0);
    Picture picture = test::noise(641, 363, 1);
    draw(screen, picture);
    const auto ids = test::displayIDs();
    ASSERT_EQ(ids.size(), 1u);
    start(ids[0], wall(641, 363));
    expectEverywhere(picture, black); // before the first frame the screen reads as black
    for (std::size_t d = 0; d < lights.size(); ++d)
        for (int i = 0; i < 5; ++i) // an unchanged screen is sent again
            EXPECT_EQ(receivers[d]->next(), matchDatagram(lights[d], picture));
    ASSERT_EQ(stopMirror(), 1);
    for (auto &receiver : receivers) {
        receiver->drain();
        EXPECT_FALSE(receiver->next(std::chrono::milliseconds(0)));
    }
}

TEST_F(Match, FollowsPlainColours) {
    test::UsedScreen screen(640, 360);
    start(test::displayIDs().at(0), wall(640, 360));
    for (const std::uint32_t colour : {0xff0000u, 0x00ff00u, 0x0000ffu, 0xffffffu, 0x010203u, 0u}) {
        const Picture now = test::plain(640, 360, colour);
        screen.fill(colour);
        for (std::size_t d = 0; d < lights.size(); ++d) {
            // A fill is one request, so no frame holds half of it; but a panel's samples may be
            // read while the frame is copied, so anything may come before the new colour settles.
            const Datagram wanted = matchDatagram(lights[d], now);
            EXPECT_TRUE(arrives(*receivers[d], wanted));
            EXPECT_EQ(receivers[d]->next(), wanted);
        }
    }
}

TEST_F(Match, TheChosenMonitorAndNoOther) {
    test::UsedScreen screen(900, 400);
    screen.run({"xrandr", "--setmonitor", "left", "401/100x400/100+0+0", screen.output()});
    screen.run({"xrandr", "--setmonitor", "right", "333/100x200/100+500+123", "none"});
    const auto ids = test::displayIDs();
    ASSERT_EQ(ids.size(), 2u);
    const Picture picture = test::noise(333, 200, 5);
    screen.fill(0x123456);
    draw(screen, picture, 500, 123);
    start(ids[1], wall(333, 200));
    expectEverywhere(picture, test::plain(333, 200, 0));
    ASSERT_EQ(stopMirror(), 1);

    start(ids[0], {{"127.0.54.1", 1, 0, 0.5, {{3, 100, 90}}}});
    expectEverywhere(test::plain(401, 400, 0x123456), test::plain(401, 400, 0));
}

TEST_F(Match, AgainAndAgain) {
    test::UsedScreen screen(320, 200);
    const auto id = test::displayIDs().at(0);
    for (unsigned round = 0; round < 5; ++round) {
        const Picture picture = test::noise(320, 200, round);
        draw(screen, picture);
        start(id, wall(320, 200));
        expectEverywhere(picture, test::plain(320, 200, 0));
        ASSERT_EQ(stopMirror(), 1);
    }
}

// The pointer must not colour a panel that it rests on.
TEST_F(Match, ThePointerIsNotDrawn) {
    test::UsedScreen screen(320, 200);
    screen.fill(0x808080);
    // The server starts with the pointer in the middle.
    start(test::displayIDs().at(0), {{"127.0.54.1", 2, 0, 0.05, {{1, 160, 100}}}});
    expectEverywhere(test::plain(320, 200, 0x808080), test::plain(320, 200, 0));
}

TEST_F(Match, DisplaysAreListedWithTheirSizes) {
    test::UsedScreen screen(640, 480);
    screen.run({"xrandr", "--setmonitor", "one", "200/100x100/100+0+0", screen.output()});
    screen.run({"xrandr", "--setmonitor", "two", "300/100x50/100+200+0", "none"});
    char text[512];
    ASSERT_EQ(getDisplays(text, sizeof text), 1);
    rapidjson::Document document;
    document.Parse(text);
    EXPECT_EQ(document["numDisplays"].GetUint(), 2u);
    EXPECT_EQ(document["displays"][0]["width"].GetUint(), 200u);
    EXPECT_EQ(document["displays"][0]["height"].GetUint(), 100u);
    EXPECT_EQ(document["displays"][1]["width"].GetUint(), 300u);
    EXPECT_EQ(document["displays"][1]["height"].GetUint(), 50u);
    for (unsigned i = 0; i < 2; ++i)
        EXPECT_TRUE(document["displays"][i]["displayID"].IsInt()); // as a configuration requires
}

} // namespace
