// The program's recordings: made from real datagrams, played back, sent on and compared.
#include "tests/support/process.h"
#include "tests/tools/panelwall/readPng.h"
#include "tests/tools/panelwall/recordings.h"
#include "tests/tools/panelwall/wallSetup.h"

#include <chrono>
#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <thread>

using namespace test;
using std::chrono::microseconds;

static std::vector<std::string> commandOf(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), PANELWALL_PROGRAM);
    return arguments;
}

static void write(const std::string &path, const std::string &bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

static std::string errorsOf(std::vector<std::string> arguments, int status) {
    Process wall(commandOf(std::move(arguments)));
    EXPECT_EQ(wall.finish().status, status) << wall.err();
    return wall.err();
}

TEST(PanelwallRecord, KeepsEveryDatagramMalformedOnesToo) {
    const Folder folder;
    const auto config =
        folder.write("wall.json", documentText({deviceText("127.0.45.11", 1, {{3, 100, 100}}),
                                                deviceText("127.0.45.12", 2, {{258, 500, 100}})},
                                               3));
    const auto file = folder.file("a.wall");
    Process wall(commandOf({config, "--record", file}));
    wall.waitFor("listening: device 1");
    const std::vector<std::uint8_t> good{1, 3, 1, 10, 20, 30, 0, 5};
    sendTo("127.0.45.11", 60221, good);
    sendTo("127.0.45.12", 60222, {});
    wall.waitFor("malformed 1  total 1  last malformed: 0 bytes");
    const std::vector<std::uint8_t> large(65507, 0xff);
    sendTo("127.0.45.12", 60222, large);
    wall.waitFor("malformed 2  total 2");
    wall.signal(SIGINT);
    EXPECT_EQ(wall.finish().status, 0) << wall.err();
    const std::string bytes = readBytes(file);
    EXPECT_NE(wall.out().find("recorded: 3 datagrams, " + std::to_string(bytes.size()) +
                              " bytes in " + file + "\n"),
              std::string::npos)
        << wall.out();

    const Read read = readRecording(bytes);
    EXPECT_EQ(read.error, "");
    EXPECT_EQ(read.document.mode, 3);
    ASSERT_EQ(read.document.devices.size(), 2u);
    EXPECT_EQ(read.document.devices[1].panels.at(0).panelID, 258);
    ASSERT_EQ(read.datagrams.size(), 3u);
    EXPECT_EQ(read.datagrams[0].device, 0u);
    EXPECT_EQ(read.datagrams[0].bytes, good);
    EXPECT_EQ(read.datagrams[1].device, 1u);
    EXPECT_TRUE(read.datagrams[1].bytes.empty());
    EXPECT_EQ(read.datagrams[2].bytes, large);
    EXPECT_GT(read.datagrams[2].time, read.datagrams[1].time);
}

// The time of arrival is that of the datagram, not of the moment when the program got to read it.
TEST(PanelwallRecord, KeepsTheTimesOfArrivalWhileTheProgramIsHeldUp) {
    const Folder folder;
    const auto config =
        folder.write("wall.json", documentText({deviceText("127.0.45.13", 2, {{1, 100, 100}})}));
    const auto file = folder.file("a.wall");
    Process wall(commandOf({config, "--record", file}));
    wall.waitFor("listening: device 0");
    wall.signal(SIGSTOP);
    const auto begin = std::chrono::steady_clock::now();
    sendTo("127.0.45.13", 60222, panelOne(1));
    std::this_thread::sleep_for(std::chrono::milliseconds(300)); // the interval to be recorded
    sendTo("127.0.45.13", 60222, panelOne(2));
    const auto passed = std::chrono::steady_clock::now() - begin;
    wall.signal(SIGCONT);
    wall.waitFor("total 2");
    wall.signal(SIGINT);
    EXPECT_EQ(wall.finish().status, 0);
    const Read read = readRecording(readBytes(file));
    ASSERT_EQ(read.datagrams.size(), 2u);
    const auto interval = read.datagrams[1].time - read.datagrams[0].time;
    EXPECT_GE(interval, std::chrono::milliseconds(299));
    // Datagrams are stamped by the system's other clock, which may be being set right.
    EXPECT_LE(interval, passed + std::chrono::milliseconds(5));
}

TEST(PanelwallReplay, ShowsTheRecordingOnTheWall) {
    const Folder folder;
    const auto file = folder.file("a.wall");
    write(file, record(wideDevices({"127.0.45.14"}),
                       {{0, microseconds(0), panelOne(9)},
                        {0, microseconds(1000), panelOne(200, 100, 50)}},
                       20'000));
    const auto png = folder.file("a.png");
    Process wall(commandOf({"--replay", file, "--snapshot", png, "--transition-unit", "0"}));
    EXPECT_EQ(wall.finish().status, 0) << wall.err();
    EXPECT_NE(wall.out().find("replaying: device 0 at \"127.0.45.14\", UDP port 60222, 1 panels\n"),
              std::string::npos);
    EXPECT_NE(wall.out().find("ended: device 0  127.0.45.14:60222  1/1 lit"), std::string::npos);
    EXPECT_NE(wall.out().find("total 2\n"), std::string::npos) << wall.out();
    EXPECT_EQ(readPng(png).at(100, 200), 0xC86432u);
}

TEST(PanelwallReplay, TakesItsTimeAndAnotherSpeed) {
    const Folder folder;
    const auto file = folder.file("a.wall");
    write(file,
          record(wideDevices({"127.0.45.15"}), {{0, microseconds(700'000), panelOne(9)}}, 900'000));
    const auto longFile = folder.file("long.wall");
    write(longFile, record(wideDevices({"127.0.45.15"}),
                           {{0, microseconds(20'000'000), panelOne(9)}}, 30'000'000));
    const auto timeOf = [](const std::string &path, const char *speed) {
        const auto begin = std::chrono::steady_clock::now();
        Process wall(commandOf({"--replay", path, "--speed", speed}));
        EXPECT_EQ(wall.finish().status, 0);
        EXPECT_NE(wall.out().find("total 1\n"), std::string::npos) << wall.out();
        return std::chrono::steady_clock::now() - begin;
    };
    EXPECT_GE(timeOf(file, "1"), std::chrono::milliseconds(900));
    EXPECT_GE(timeOf(file, "0.5"), std::chrono::milliseconds(1800));
    EXPECT_LT(timeOf(longFile, "1000"), std::chrono::seconds(30));
}

TEST(PanelwallReplay, PlaysADamagedRecordingUpToItsFault) {
    const Folder folder;
    const auto file = folder.file("a.wall");
    const auto whole =
        record(wideDevices({"127.0.45.16"}),
               {{0, microseconds(0), panelOne(9)}, {0, microseconds(1000), panelOne(9)}}, 20'000);
    write(file, whole.substr(0, whole.size() - 10));
    Process wall(commandOf({"--replay", file}));
    EXPECT_EQ(wall.finish().status, 7);
    EXPECT_NE(wall.out().find("total 1\n"), std::string::npos) << wall.out();
    EXPECT_NE(wall.err().find("panelwall: " + file + ": ends at byte "), std::string::npos)
        << wall.err();
}

TEST(PanelwallReplay, SendsToTheConfigurationsDevicesInsteadOfTheRecorded) {
    const Folder folder;
    const auto file = folder.file("a.wall");
    write(file, record(wideDevices({"192.0.2.7"}), {{0, microseconds(0), panelOne(7, 8, 9)}}, 10));
    const auto config =
        folder.write("wall.json", documentText({deviceText("127.0.45.17", 2, {{1, 100, 100}})}));
    const auto again = folder.file("b.wall");
    Process wall(commandOf({config, "--record", again}));
    wall.waitFor("listening: device 0");
    Process replay(commandOf({config, "--replay", file, "--send"}));
    EXPECT_EQ(replay.finish().status, 0) << replay.err();
    EXPECT_NE(replay.out().find("sent: 1 datagrams\n"), std::string::npos) << replay.out();
    wall.waitFor("1/1 lit");
    wall.signal(SIGINT);
    EXPECT_EQ(wall.finish().status, 0);
    const Read read = readRecording(readBytes(again));
    ASSERT_EQ(read.datagrams.size(), 1u);
    EXPECT_EQ(read.datagrams[0].bytes, panelOne(7, 8, 9));
}

TEST(PanelwallReplay, SendsBeyondThisMachineOnlyWhenAsked) {
    const Folder folder;
    const auto file = folder.file("a.wall");
    write(file, record(wideDevices({"127.0.45.18", "192.0.2.7"}), {}, 10));
    EXPECT_NE(errorsOf({"--replay", file, "--send"}, 5).find("/devices/1/ip: "), std::string::npos);
    EXPECT_EQ(errorsOf({"--replay", file, "--send", "--anywhere"}, 0), "");
    EXPECT_EQ(errorsOf({"--replay", file}, 0), "");
}

TEST(PanelwallReplay, AnAddressCannotReachTheTerminal) {
    const Folder folder;
    const auto file = folder.file("a.wall");
    write(file, record(wideDevices({"\x1b[2J"}), {}, 10));
    Process wall(commandOf({"--replay", file}));
    EXPECT_EQ(wall.finish().status, 5);
    EXPECT_EQ((wall.out() + wall.err()).find('\x1b'), std::string::npos);
}

TEST(PanelwallReplay, SaysWhatIsWrongWithFilesAndOptions) {
    const Folder folder;
    const auto config =
        folder.write("wall.json", documentText({deviceText("127.0.45.19", 2, {{1, 1, 1}})}));
    EXPECT_NE(errorsOf({"--replay", folder.file("none")}, 7).find("none: cannot be read: No such"),
              std::string::npos);
    EXPECT_NE(errorsOf({"--replay", folder.file("")}, 7).find("is no regular file"),
              std::string::npos);
    EXPECT_NE(errorsOf({"--replay", config}, 7).find(config + ": is no recording of a wall"),
              std::string::npos);
    EXPECT_NE(errorsOf({config, "--record", folder.file("no/a.wall")}, 3)
                  .find("a recording cannot be written here: No such file"),
              std::string::npos);
    const auto file = folder.file("a.wall");
    write(file, record(wideDevices({"127.0.45.19", "127.0.45.20"}), {}, 10));
    EXPECT_NE(errorsOf({config, "--replay", file}, 4).find("there are 1 devices, but 2 in the"),
              std::string::npos);
    for (const char *speed : {"0", "-1", "fast", "1e9", "nan"})
        EXPECT_NE(errorsOf({"--replay", file, "--speed", speed}, 2), "") << speed;
    EXPECT_NE(errorsOf({config, "--speed", "2"}, 2), "");
    EXPECT_NE(errorsOf({config, "--send"}, 2), "");
    EXPECT_NE(errorsOf({"--replay", file, "--anywhere"}, 2), "");
    EXPECT_NE(errorsOf({config, "--replay", file, "--record", file}, 2), "");
    EXPECT_NE(errorsOf({"--compare", file}, 2), "");
}

TEST(PanelwallCompare, ExitStatusSaysWhetherTheyDiffer) {
    const Folder folder;
    const auto documents = wideDevices({"127.0.45.21"});
    const std::string bytes = record(documents, {{0, microseconds(5), panelOne(1)}}, 10);
    write(folder.file("a"), bytes);
    write(folder.file("later"), record(documents, {{0, microseconds(9), panelOne(1)}}, 20));
    write(folder.file("other"), record(documents, {{0, microseconds(5), panelOne(2)}}, 10));
    write(folder.file("cut"), bytes.substr(0, bytes.size() - 1));
    const auto compare = [&](const std::string &left, const std::string &right, int status) {
        Process wall(commandOf({"--compare", folder.file(left), folder.file(right)}));
        EXPECT_EQ(wall.finish().status, status) << wall.out() << wall.err();
        return wall.out() + wall.err();
    };
    EXPECT_NE(compare("a", "later", 0).find("the same: 1 devices\n"), std::string::npos);
    EXPECT_NE(compare("a", "other", 1).find("colour (1, 0, 0) and (2, 0, 0)"), std::string::npos);
    EXPECT_NE(compare("cut", "a", 2).find("ends at byte"), std::string::npos);
    EXPECT_NE(compare("cut", "a", 2).find("1 the same"), std::string::npos);
    EXPECT_NE(compare("a", "none", 2).find("cannot be read"), std::string::npos);
}
