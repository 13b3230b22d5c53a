#include "tests/support/process.h"
#include "tests/tools/panelwall/readPng.h"
#include "tests/tools/panelwall/wallSetup.h"

#include <csignal>
#include <gtest/gtest.h>

using namespace test;

static std::vector<std::string> panelwall(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), PANELWALL_PROGRAM);
    return arguments;
}

TEST(PanelwallProgram, CountsAndColoursWhatArrives) {
    const Folder folder;
    const auto config = folder.write(
        "wall.json", documentText({deviceText("127.0.41.1", 1, {{3, 100, 100}, {300, 300, 100}}),
                                   deviceText("127.0.41.2", 2, {{258, 500, 100}})}));
    Process wall(panelwall({config}));
    wall.waitFor("listening: device 0 at \"127.0.41.1\", UDP port 60221, 2 panels\n");
    wall.waitFor("listening: device 1 at \"127.0.41.2\", UDP port 60222, 1 panels\n");
    sendTo("127.0.41.1", 60221, {2, 3, 1, 10, 20, 30, 0, 5, 44, 1, 1, 2, 3, 0, 6});
    sendTo("127.0.41.2", 60222, {0, 1, 1, 2, 9, 8, 7, 0, 0, 5});
    sendTo("127.0.41.2", 60222, {0, 1, 1, 2, 9, 8, 7, 4, 0, 5});
    wall.waitFor("device 0  127.0.41.1:60221  2/2 lit");
    wall.waitFor("malformed 1  total 2  last malformed: record 0: white 4, not 0\n");
    wall.signal(SIGINT);
    EXPECT_EQ(wall.finish().status, 0);
    EXPECT_NE(wall.out().find("ended: device 0  127.0.41.1:60221  2/2 lit"), std::string::npos);
    EXPECT_NE(wall.out().find("ended: device 1  127.0.41.2:60222  1/1 lit"), std::string::npos);
    EXPECT_EQ(wall.err(), "");
}

// A script starts what it puts into the background with SIGINT ignored.
TEST(PanelwallProgram, EndsOnControlCThoughItWasIgnored) {
    const Folder folder;
    const auto config =
        folder.write("wall.json", documentText({deviceText("127.0.41.11", 1, {{3, 100, 100}})}));
    std::signal(SIGINT, SIG_IGN);
    Process wall(panelwall({config}));
    std::signal(SIGINT, SIG_DFL);
    wall.waitFor("listening:");
    wall.signal(SIGINT);
    EXPECT_EQ(wall.finish().status, 0);
    EXPECT_NE(wall.out().find("ended: "), std::string::npos) << wall.out();
}

TEST(PanelwallProgram, MalformedDatagramsAreNamedWithTheirReason) {
    const Folder folder;
    const auto config =
        folder.write("wall.json", documentText({deviceText("127.0.41.3", 1, {{3, 100, 100}})}));
    Process wall(panelwall({config}), {.terminal = test::TerminalSize{120, 30}});
    wall.waitFor("0/1 lit");
    const std::pair<std::vector<std::uint8_t>, std::string> cases[] = {
        {{}, "0 bytes, too short for the panel count"},
        {{1, 3, 1}, "3 bytes, but a panel count of 1 needs 8"},
        {{1, 3, 0, 1, 2, 3, 0, 5}, "record 0: frame count 0, not 1"},
        {{1, 3, 1, 1, 2, 3, 255, 5}, "record 0: white 255, not 0"},
        {{1, 4, 1, 1, 2, 3, 0, 5}, "record 0: panel id 4 is unknown to this device"},
        {{2, 3, 1, 1, 2, 3, 0, 5, 3, 1, 1, 2, 3, 0, 5},
         "record 1: panel id 3 occurs more often than panels have it"},
        {std::vector<std::uint8_t>(65507, 0xff),
         "65507 bytes, but a panel count of 255 needs 1786"},
    };
    int count = 0;
    for (const auto &[bytes, reason] : cases) {
        sendTo("127.0.41.3", 60221, bytes);
        ++count;
        wall.waitFor("0/1 lit");
        const std::string number = std::to_string(count);
        wall.waitFor("malformed " + number + "  total " + number);
        wall.waitFor("last malformed: " + reason);
    }
    wall.signal(SIGTERM);
    EXPECT_EQ(wall.finish().status, 0);
}

TEST(PanelwallProgram, WritesThePictureOnRequestAndAtTheEnd) {
    const Folder folder;
    const auto config = folder.write(
        "wall.json", documentText({deviceText("127.0.41.4", 2, {{1, 100, 100}, {2, 300, 100}})}));
    const auto png = folder.file("wall.png");
    Process wall(
        panelwall({config, "--snapshot", png, "--size", "400x200", "--transition-unit", "0"}));
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
    wall.signal(SIGTERM);
    EXPECT_EQ(wall.finish().status, 0);
    picture = readPng(png);
    ASSERT_EQ(picture.width, 400);
    EXPECT_EQ(picture.at(100, 100), 0xc86432u);
    EXPECT_EQ(picture.at(300, 100), 0x01ff03u);
    EXPECT_EQ(folder.list(), (std::vector<std::string>{"wall.json", "wall.png"}));
}

// The second colour comes within weeks, so that the picture must still have the first.
TEST(PanelwallProgram, PicturesShowPanelsOnTheirWay) {
    const Folder folder;
    const auto config =
        folder.write("wall.json", documentText({deviceText("127.0.58.60", 2, {{1, 100, 100}})}));
    const auto png = folder.file("wall.png");
    Process wall(panelwall({config, "--snapshot", png, "--transition-unit", "60000"}));
    wall.waitFor("listening:");
    sendTo("127.0.58.60", 60222, {0, 1, 0, 1, 200, 100, 50, 0, 0, 0});
    sendTo("127.0.58.60", 60222, {0, 1, 0, 1, 10, 20, 250, 0, 255, 255});
    wall.waitFor("total 2\n");
    wall.signal(SIGINT);
    EXPECT_EQ(wall.finish().status, 0);
    EXPECT_EQ(readPng(png).at(100, 100), 0xc86432u);
}

TEST(PanelwallProgram, TheNewestOfManyWins) {
    const Folder folder;
    const auto config =
        folder.write("wall.json", documentText({deviceText("127.0.41.10", 2, {{1, 100, 100}})}));
    const auto png = folder.file("wall.png");
    Process wall(panelwall({config, "--snapshot", png, "--transition-unit", "0"}));
    wall.waitFor("listening:");
    wall.signal(SIGSTOP);
    for (std::uint8_t i = 1; i <= 60; ++i)
        sendTo("127.0.41.10", 60222, {0, 1, 0, 1, i, 0, 77, 0, 0, 5});
    wall.signal(SIGCONT);
    wall.waitFor("total 60\n");
    wall.signal(SIGINT);
    EXPECT_EQ(wall.finish().status, 0);
    EXPECT_EQ(readPng(png).at(100, 100), 0x3c004du);
}

TEST(PanelwallProgram, DerivesTheSizeAndEndsByItself) {
    const Folder folder;
    const auto config = folder.write(
        "wall.json", documentText({deviceText("127.0.41.5", 2, {{1, 100, 100}, {2, 300, 150}})}));
    const auto png = folder.file("wall.png");
    Process wall(panelwall({config, "--snapshot", png, "--seconds", "0.05"}));
    EXPECT_EQ(wall.finish().status, 0);
    const Picture picture = readPng(png);
    EXPECT_EQ(picture.width, 350);
    EXPECT_EQ(picture.height, 200);
    EXPECT_NE(wall.out().find("ended: device 0  127.0.41.5:60222  0/2 lit   0/s  last never"),
              std::string::npos);
}

TEST(PanelwallProgram, RequestWithoutAFileIsAnswered) {
    const Folder folder;
    const auto config =
        folder.write("wall.json", documentText({deviceText("127.0.41.6", 2, {{1, 1, 1}})}));
    Process wall(panelwall({config}));
    wall.waitFor("listening:");
    wall.signal(SIGUSR1);
    wall.waitFor("start with --snapshot FILE");
    wall.signal(SIGINT);
    EXPECT_EQ(wall.finish().status, 0);
}

TEST(PanelwallProgram, SilenceIsToldWithWhatToCheck) {
    const Folder folder;
    const auto config =
        folder.write("wall.json", documentText({deviceText("127.0.41.7", 2, {{1, 1, 1}})}, 2));
    Process wall(panelwall({config}));
    wall.waitFor("Nothing has arrived at all in 3");
    wall.waitFor("In fade mode that is normal while the screen's dominant colour does");
    wall.signal(SIGINT);
    EXPECT_EQ(wall.finish().status, 0);
}

TEST(PanelwallProgram, EndsWhenNobodyReadsAnyMore) {
    const Folder folder;
    const auto config =
        folder.write("wall.json", documentText({deviceText("127.0.41.8", 2, {{1, 1, 1}})}));
    Process wall(panelwall({config}));
    wall.waitFor("listening:");
    wall.closeOutput();
    EXPECT_EQ(wall.finish().status, 1);
}

TEST(PanelwallProgram, ReadsTheConfigurationFromStandardInput) {
    const Folder folder;
    const auto config =
        folder.write("wall.json", documentText({deviceText("127.0.41.9", 2, {{1, 1, 1}})}));
    Process wall(
        {"/bin/sh", "-c", std::string(PANELWALL_PROGRAM) + " - --seconds 0.05 < " + config});
    EXPECT_EQ(wall.finish().status, 0);
    EXPECT_NE(wall.out().find("listening: device 0 at \"127.0.41.9\""), std::string::npos);
}
