// The program's recordings: made from real datagrams, played back, sent on and compared.
#include "tests/tools/panelwall/readPng.h"
#include "tests/tools/panelwall/recordings.h"
#include "tests/tools/panelwall/wallSetup.h"

#include <chrono>
#include <thread>

using namespace test;
using std::chrono::microseconds;

using PanelwallRecord = WallTest;
using PanelwallReplay = WallTest;
using PanelwallCompare = WallTest;

TEST_F(PanelwallRecord, KeepsEveryDatagramMalformedOnesToo) {
    const auto config = writeConfig({deviceText("127.0.45.11", 1, {{3, 100, 100}}),
                                     deviceText("127.0.45.12", 2, {{258, 500, 100}})},
                                    3);
    const auto file = folder.file("a.wall");
    Process wall = start({config, "--record", file});
    wall.waitFor("listening: device 1");
    const Datagram good{1, 3, 1, 10, 20, 30, 0, 5};
    sendTo("127.0.45.11", 60221, good);
    sendTo("127.0.45.12", 60222, {});
    wall.waitFor("malformed 1  total 1  last malformed: 0 bytes");
    const Datagram large(65507, 0xff);
    sendTo("127.0.45.12", 60222, large);
    wall.waitFor("malformed 2  total 2");
    end(wall);
    const std::string bytes = fileText(file);
    EXPECT_TRUE(contains(wall.out(), "recorded: 3 datagrams, " + std::to_string(bytes.size()) +
                                         " bytes in " + file + "\n"));

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

// The recorded time is the datagram's arrival, not the moment when the program reads it.
TEST_F(PanelwallRecord, KeepsTheTimesOfArrivalWhileTheProgramIsHeldUp) {
    const auto file = folder.file("a.wall");
    Process wall = start({writeOnePanel("127.0.45.13"), "--record", file});
    wall.waitFor("listening: device 0");
    wall.signal(SIGSTOP);
    const auto begin = std::chrono::steady_clock::now();
    sendTo("127.0.45.13", 60222, panelOne(1));
    std::this_thread::sleep_for(std::chrono::milliseconds(300)); // the interval to be recorded
    sendTo("127.0.45.13", 60222, panelOne(2));
    const auto passed = std::chrono::steady_clock::now() - begin;
    wall.signal(SIGCONT);
    wall.waitFor("total 2");
    end(wall);
    const Read read = readRecording(fileText(file));
    ASSERT_EQ(read.datagrams.size(), 2u);
    const auto interval = read.datagrams[1].time - read.datagrams[0].time;
    EXPECT_GE(interval, std::chrono::milliseconds(299));
    // The system clock stamps the datagrams, and may be adjusted meanwhile.
    EXPECT_LE(interval, passed + std::chrono::milliseconds(5));
}

TEST_F(PanelwallReplay, ShowsTheRecordingOnTheWall) {
    const auto file = folder.write(
        "a.wall",
        record(wideDevices({"127.0.45.14"}),
               {{0, microseconds(0), panelOne(9)}, {0, microseconds(1000), panelOne(200, 100, 50)}},
               20'000));
    const auto png = folder.file("a.png");
    expectOutput(run({"--replay", file, "--snapshot", png, "--transition-unit", "0"}), 0,
                 {"replaying: device 0 at \"127.0.45.14\", UDP port 60222, 1 panel\n",
                  "ended: device 0  127.0.45.14:60222  1/1 lit", "total 2\n"});
    EXPECT_EQ(readPng(png).at(100, 200), 0xC86432u);
}

TEST_F(PanelwallReplay, TakesItsTimeAndAnotherSpeed) {
    const auto devices = wideDevices({"127.0.45.15"});
    const auto file =
        folder.write("a.wall", record(devices, {{0, microseconds(700'000), panelOne(9)}}, 900'000));
    const auto longFile = folder.write(
        "long.wall", record(devices, {{0, microseconds(20'000'000), panelOne(9)}}, 30'000'000));
    const auto timeOf = [](const std::string &path, const char *speed) {
        const auto begin = std::chrono::steady_clock::now();
        expectOutput(run({"--replay", path, "--speed", speed}), 0, {"total 1\n"});
        return std::chrono::steady_clock::now() - begin;
    };
    EXPECT_GE(timeOf(file, "1"), std::chrono::milliseconds(900));
    EXPECT_GE(timeOf(file, "0.5"), std::chrono::milliseconds(1800));
    EXPECT_LT(timeOf(longFile, "1000"), std::chrono::seconds(30));
}

TEST_F(PanelwallReplay, PlaysADamagedRecordingUpToItsFault) {
    const auto whole =
        record(wideDevices({"127.0.45.16"}),
               {{0, microseconds(0), panelOne(9)}, {0, microseconds(1000), panelOne(9)}}, 20'000);
    const auto file = folder.write("a.wall", whole.substr(0, whole.size() - 10));
    const ProcessResult result = run({"--replay", file});
    expectOutput(result, 7, {"total 1\n"});
    EXPECT_TRUE(contains(result.err, "panelwall: " + file + ": ends at byte "));
}

TEST_F(PanelwallReplay, SendsToTheConfigurationsDevicesInsteadOfTheRecorded) {
    const auto file = folder.write("a.wall", record(wideDevices({"192.0.2.7"}),
                                                    {{0, microseconds(0), panelOne(7, 8, 9)}}, 10));
    const auto config = writeOnePanel("127.0.45.17");
    const auto again = folder.file("b.wall");
    Process wall = start({config, "--record", again});
    wall.waitFor("listening: device 0");
    expectOutput(run({config, "--replay", file, "--send"}), 0, {"sent: 1 datagram\n"});
    wall.waitFor("1/1 lit");
    end(wall);
    const Read read = readRecording(fileText(again));
    ASSERT_EQ(read.datagrams.size(), 1u);
    EXPECT_EQ(read.datagrams[0].bytes, panelOne(7, 8, 9));
}

TEST_F(PanelwallReplay, SendsBeyondThisMachineOnlyWhenAsked) {
    const auto file =
        folder.write("a.wall", record(wideDevices({"127.0.45.18", "192.0.2.7"}), {}, 10));
    expectErrors(run({"--replay", file, "--send"}), 5, {"/devices/1/ip: "});
    const ProcessResult sent = run({"--replay", file, "--send", "--anywhere"});
    EXPECT_EQ(sent.status, 0);
    EXPECT_EQ(sent.err, "");
    const ProcessResult shown = run({"--replay", file});
    EXPECT_EQ(shown.status, 0);
    EXPECT_EQ(shown.err, "");
}

TEST_F(PanelwallReplay, AnAddressCannotReachTheTerminal) {
    const auto file = folder.write("a.wall", record(wideDevices({"\x1b[2J"}), {}, 10));
    const ProcessResult result = run({"--replay", file});
    EXPECT_EQ(result.status, 5);
    EXPECT_FALSE(contains(result.out + result.err, "\x1b"));
}

TEST_F(PanelwallReplay, SaysWhatIsWrongWithFilesAndOptions) {
    const auto config = writeOnePanel("127.0.45.19");
    const auto file =
        folder.write("a.wall", record(wideDevices({"127.0.45.19", "127.0.45.20"}), {}, 10));
    expectErrors(run({"--replay", folder.file("none")}), 7, {"none: cannot be read: No such"});
    expectErrors(run({"--replay", folder.file("")}), 7, {"is no regular file"});
    expectErrors(run({"--replay", config}), 7, {config + ": is not a recording of a wall"});
    expectErrors(run({config, "--record", folder.file("no/a.wall")}), 3,
                 {"a recording cannot be written here: No such file"});
    expectErrors(run({config, "--replay", file}), 4,
                 {"expected 2 devices as in the recording, found 1"});
    const auto refuses = [](const std::vector<std::string> &arguments) {
        const ProcessResult result = run(arguments);
        EXPECT_EQ(result.status, 2) << arguments.back();
        EXPECT_NE(result.err, "") << arguments.back();
    };
    for (const char *speed : {"0", "-1", "fast", "1e9", "nan"})
        refuses({"--replay", file, "--speed", speed});
    refuses({config, "--speed", "2"});
    refuses({config, "--send"});
    refuses({"--replay", file, "--anywhere"});
    refuses({config, "--replay", file, "--record", file});
    refuses({"--compare", file});
}

TEST_F(PanelwallCompare, ExitStatusSaysWhetherTheyDiffer) {
    const auto devices = wideDevices({"127.0.45.21"});
    const std::string bytes = record(devices, {{0, microseconds(5), panelOne(1)}}, 10);
    folder.write("a", bytes);
    folder.write("later", record(devices, {{0, microseconds(9), panelOne(1)}}, 20));
    folder.write("other", record(devices, {{0, microseconds(5), panelOne(2)}}, 10));
    folder.write("cut", bytes.substr(0, bytes.size() - 1));
    const auto compare = [&](const std::string &left, const std::string &right, int status) {
        const ProcessResult result = run({"--compare", folder.file(left), folder.file(right)});
        EXPECT_EQ(result.status, status) << result.out << result.err;
        return result.out + result.err;
    };
    EXPECT_TRUE(contains(compare("a", "later", 0), "the same: 1 device\n"));
    EXPECT_TRUE(contains(compare("a", "other", 1), "colour (1, 0, 0) and (2, 0, 0)"));
    const std::string cut = compare("cut", "a", 2);
    EXPECT_TRUE(contains(cut, "ends at byte"));
    EXPECT_TRUE(contains(cut, "1 the same"));
    EXPECT_TRUE(contains(compare("a", "none", 2), "cannot be read"));
}
