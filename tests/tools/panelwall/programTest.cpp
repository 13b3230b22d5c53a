#include "tests/tools/panelwall/readPng.h"
#include "tests/tools/panelwall/wallSetup.h"

using namespace test;
using PanelwallProgram = WallTest;

TEST_F(PanelwallProgram, CountsAndColoursWhatArrives) {
    Process wall =
        start({writeConfig({deviceText("127.0.41.1", 1, {{3, 100, 100}, {300, 300, 100}}),
                            deviceText("127.0.41.2", 2, {{258, 500, 100}})})});
    wall.waitFor("listening: device 0 at \"127.0.41.1\", UDP port 60221, 2 panels\n");
    wall.waitFor("listening: device 1 at \"127.0.41.2\", UDP port 60222, 1 panel\n");
    sendTo("127.0.41.1", 60221, {2, 3, 1, 10, 20, 30, 0, 5, 44, 1, 1, 2, 3, 0, 6});
    sendTo("127.0.41.2", 60222, {0, 1, 1, 2, 9, 8, 7, 0, 0, 5});
    sendTo("127.0.41.2", 60222, {0, 1, 1, 2, 9, 8, 7, 4, 0, 5});
    wall.waitFor("device 0  127.0.41.1:60221  2/2 lit");
    wall.waitFor("malformed 1  total 2  last malformed: record 0: white 4, not 0\n");
    end(wall);
    EXPECT_TRUE(contains(wall.out(), "ended: device 0  127.0.41.1:60221  2/2 lit"));
    EXPECT_TRUE(contains(wall.out(), "ended: device 1  127.0.41.2:60222  1/1 lit"));
    EXPECT_EQ(wall.err(), "");
}

// Scripts start background programs with SIGINT ignored.
TEST_F(PanelwallProgram, EndsOnControlCThoughItWasIgnored) {
    Process wall = start({writeOnePanel("127.0.41.11")}, {.ignoredSignal = SIGINT});
    wall.waitFor("listening:");
    end(wall);
    EXPECT_TRUE(contains(wall.out(), "ended: "));
}

TEST_F(PanelwallProgram, MalformedDatagramsAreNamedWithTheirReason) {
    Process wall = start({writeConfig({deviceText("127.0.41.3", 1, {{3, 100, 100}})})},
                         {.terminal = TerminalSize{120, 30}});
    wall.waitFor("0/1 lit");
    const std::pair<Datagram, std::string> cases[] = {
        {{}, "0 bytes, too short for the panel count"},
        {{1, 3, 1}, "3 bytes, but a panel count of 1 needs 8"},
        {{1, 3, 0, 1, 2, 3, 0, 5}, "record 0: frame count 0, not 1"},
        {{1, 3, 1, 1, 2, 3, 255, 5}, "record 0: white 255, not 0"},
        {{1, 4, 1, 1, 2, 3, 0, 5}, "record 0: panel id 4 is unknown to this device"},
        {{2, 3, 1, 1, 2, 3, 0, 5, 3, 1, 1, 2, 3, 0, 5},
         "record 1: panel id 3 occurs in more records than panels have it"},
        {Datagram(65507, 0xff), "65507 bytes, but a panel count of 255 needs 1786"},
    };
    int count = 0;
    for (const auto &[bytes, reason] : cases) {
        sendTo("127.0.41.3", 60221, bytes);
        const std::string number = std::to_string(++count);
        wall.waitFor("malformed " + number + "  total " + number);
        wall.waitFor("last malformed: " + reason);
    }
    end(wall, SIGTERM);
}

TEST_F(PanelwallProgram, WritesThePictureOnRequestAndAtTheEnd) {
    const auto config = writeConfig({deviceText("127.0.41.4", 2, {{1, 100, 100}, {2, 300, 100}})});
    const auto png = folder.file("wall.png");
    Process wall =
        start({config, "--snapshot", png, "--size", "400x200", "--transition-unit", "0"});
    wall.waitFor("listening:");
    wall.signal(SIGUSR1);
    wall.waitFor("picture written: " + png + "\n");
    Picture picture = readPng(png);
    ASSERT_EQ(picture.width, 400);
    ASSERT_EQ(picture.height, 200);
    EXPECT_EQ(picture.at(100, 100), picture.at(200, 100)); // hollow

    sendTo("127.0.41.4", 60222, {0, 1, 0, 1, 200, 100, 50, 0, 0, 5});
    wall.waitFor("1/2 lit");
    std::size_t seen = wall.out().size();
    wall.signal(SIGUSR1);
    wall.waitFor("picture written: ", seen);
    picture = readPng(png);
    ASSERT_EQ(picture.width, 400);
    EXPECT_EQ(picture.at(100, 100), 0xc86432u);
    EXPECT_EQ(picture.at(300, 100), picture.at(200, 100));

    sendTo("127.0.41.4", 60222, {0, 1, 0, 2, 1, 255, 3, 0, 0, 5});
    wall.waitFor("2/2 lit");
    end(wall, SIGTERM);
    picture = readPng(png);
    ASSERT_EQ(picture.width, 400);
    EXPECT_EQ(picture.at(100, 100), 0xc86432u);
    EXPECT_EQ(picture.at(300, 100), 0x01ff03u);
    EXPECT_EQ(folder.list(), (std::vector<std::string>{"wall.json", "wall.png"}));
}

// The transition to the second colour takes weeks, so the picture must still show the first.
TEST_F(PanelwallProgram, PicturesShowPanelsOnTheirWay) {
    const auto png = folder.file("wall.png");
    Process wall =
        start({writeOnePanel("127.0.58.60"), "--snapshot", png, "--transition-unit", "60000"});
    wall.waitFor("listening:");
    sendTo("127.0.58.60", 60222, {0, 1, 0, 1, 200, 100, 50, 0, 0, 0});
    sendTo("127.0.58.60", 60222, {0, 1, 0, 1, 10, 20, 250, 0, 255, 255});
    wall.waitFor("total 2\n");
    end(wall);
    EXPECT_EQ(readPng(png).at(100, 100), 0xc86432u);
}

TEST_F(PanelwallProgram, TheNewestOfManyWins) {
    const auto png = folder.file("wall.png");
    Process wall =
        start({writeOnePanel("127.0.41.10"), "--snapshot", png, "--transition-unit", "0"});
    wall.waitFor("listening:");
    wall.signal(SIGSTOP);
    for (std::uint8_t i = 1; i <= 60; ++i)
        sendTo("127.0.41.10", 60222, {0, 1, 0, 1, i, 0, 77, 0, 0, 5});
    wall.signal(SIGCONT);
    wall.waitFor("total 60\n");
    end(wall);
    EXPECT_EQ(readPng(png).at(100, 100), 0x3c004du);
}

TEST_F(PanelwallProgram, DerivesTheSizeAndEndsByItself) {
    const auto config = writeConfig({deviceText("127.0.41.5", 2, {{1, 100, 100}, {2, 300, 150}})});
    const auto png = folder.file("wall.png");
    expectOutput(run({config, "--snapshot", png, "--seconds", "0.05"}), 0,
                 {"ended: device 0  127.0.41.5:60222  0/2 lit   0/s  last never"});
    const Picture picture = readPng(png);
    EXPECT_EQ(picture.width, 350);
    EXPECT_EQ(picture.height, 200);
}

TEST_F(PanelwallProgram, RequestWithoutAFileIsAnswered) {
    Process wall = start({writeOnePanel("127.0.41.6")});
    wall.waitFor("listening:");
    wall.signal(SIGUSR1);
    wall.waitFor("start with --snapshot FILE");
    end(wall);
}

TEST_F(PanelwallProgram, SilenceIsToldWithWhatToCheck) {
    Process wall = start({writeOnePanel("127.0.41.7", 2)});
    wall.waitFor("Nothing has arrived at all in 3");
    wall.waitFor("In fade mode that is normal while the screen's dominant colour does");
    end(wall);
}

TEST_F(PanelwallProgram, EndsWhenNobodyReadsAnyMore) {
    Process wall = start({writeOnePanel("127.0.41.8")});
    wall.waitFor("listening:");
    wall.closeOutput();
    EXPECT_EQ(wall.finish().status, 1);
}

TEST_F(PanelwallProgram, ReadsTheConfigurationFromStandardInput) {
    const std::string text = documentText({deviceText("127.0.41.9", 2, {{1, 1, 1}})});
    expectOutput(start({"-", "--seconds", "0.05"}, {.input = text}).finish(), 0,
                 {"listening: device 0 at \"127.0.41.9\""});
}
