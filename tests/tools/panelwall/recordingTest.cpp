// The format of recordings: what is written can be read, and faults are reported.
#include "tests/support/expectations.h"
#include "tests/support/files.h"
#include "tests/tools/panelwall/recordings.h"
#include "tools/lights/text.h"
#include "tools/recording/recordingFormat.h"
#include "tools/recording/recordingWriter.h"

#include <gtest/gtest.h>
#include <sstream>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace test;
using std::chrono::microseconds;

static const std::vector<RecordedDatagram> threeDatagrams = {
    {0, microseconds(0), panelOne(1)},
    {1, microseconds(42'000), {}},
    {0, microseconds(300'000), std::vector<std::uint8_t>(300, 0xff)},
};

static std::string threeRecorded() {
    return record(wideDevices({"127.0.45.1", "::1"}), threeDatagrams, 1'000'000);
}

static void expectSame(const std::vector<RecordedDatagram> &left,
                       const std::vector<RecordedDatagram> &right, std::size_t count) {
    ASSERT_GE(left.size(), count);
    ASSERT_GE(right.size(), count);
    for (std::size_t i = 0; i < count; ++i) {
        EXPECT_EQ(left[i].device, right[i].device) << i;
        EXPECT_EQ(left[i].time, right[i].time) << i;
        EXPECT_EQ(left[i].bytes, right[i].bytes) << i;
    }
}

TEST(PanelwallRecording, GivesBackWhatWasWritten) {
    config::Document document = wideDevices({"127.0.45.1", "::1"});
    document.displayID = -7;
    document.mode = 3;
    document.devices[0].scaleFactor = 0.1;
    document.devices[0].shapeType = -2;
    document.devices[0].panels = {{INT32_MIN, INT32_MAX, -1}, {5, 6, 7}};
    document.devices[1].controlVersion = 1;
    document.devices[1].panels.clear();
    const Read read = readRecording(record(document, threeDatagrams, 1'000'000));
    EXPECT_TRUE(read.head);
    EXPECT_EQ(read.error, "");
    EXPECT_EQ(read.end, 1'000'000);
    ASSERT_EQ(read.datagrams.size(), 3u);
    expectSame(read.datagrams, threeDatagrams, 3);
    EXPECT_EQ(config::documentText(read.document), config::documentText(document));
    EXPECT_EQ(read.document.devices[0].scaleFactor, 0.1);
    EXPECT_EQ(read.document.devices[0].panels[0].panelID, INT32_MIN);
    EXPECT_EQ(read.document.devices[1].port(), 60221);
}

// docs/recordings.md describes these bytes.
TEST(PanelwallRecording, HasTheDocumentedBytes) {
    const std::string document = config::documentText(wideDevices({"127.0.45.1", "::1"}));
    const std::string bytes = threeRecorded();
    ASSERT_EQ(bytes.substr(0, 9), std::string("\x89PWR\r\n\x1a\n\x01", 9));
    const std::size_t text = bytes.find(document);
    ASSERT_NE(text, std::string::npos);
    const std::string records = bytes.substr(text + document.size());
    const std::string expected =
        std::string("\x01\x00\x0a\x00\x01\x00\x01\x01\x00\x00\x00\x00\x01", 13) +
        std::string("\x02\x90\xc8\x02\x00", 5) + "\x01\xd0\xdf\x0f\xac\x02" +
        std::string(300, '\xff') + std::string("\x00\xe0\xdc\x2a\x03", 5);
    EXPECT_EQ(records, expected);
}

TEST(PanelwallRecording, EveryTruncationGivesWhatIsBeforeIt) {
    const std::string whole = threeRecorded();
    const std::string headText = config::documentText(wideDevices({"127.0.45.1", "::1"}));
    const std::size_t headEnd = whole.find(headText) + headText.size();
    const std::size_t ends[] = {headEnd, headEnd + 13, headEnd + 18, headEnd + 324};
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const Read read = readRecording(whole.substr(0, size));
        EXPECT_NE(read.error, "") << size;
        EXPECT_EQ(read.head, size >= headEnd) << size;
        const std::size_t expected = size < ends[1]   ? 0
                                     : size < ends[2] ? 1
                                     : size < ends[3] ? 2
                                                      : 3;
        ASSERT_EQ(read.datagrams.size(), expected) << size;
        expectSame(read.datagrams, threeDatagrams, expected);
        if (size > 0) {
            EXPECT_TRUE(contains(read.error, "ends at byte " + std::to_string(size)));
            EXPECT_TRUE(contains(read.error, ", after " +
                                                 lights::counted(expected, "whole datagram") +
                                                 ", without an end record"));
        }
        EXPECT_EQ(read.end, expected > 0 ? threeDatagrams[expected - 1].time.count() : 0) << size;
    }
}

TEST(PanelwallRecording, ForeignFilesAreNamedAsSuch) {
    const std::string good = threeRecorded();
    const auto errorOf = [](const std::string &bytes) {
        const Read read = readRecording(bytes);
        EXPECT_FALSE(read.head);
        return read.error;
    };
    EXPECT_EQ(errorOf(""), "is empty, and so no recording");
    for (const std::string &foreign : {std::string("{\"displayID\": 1}"), std::string(4096, '\0'),
                                       std::string("\x89PNG\r\n\x1a\n")})
        EXPECT_EQ(errorOf(foreign), "is not a recording of a wall: its first bytes are different");
    std::string text = good;
    text.erase(4, 1); // as a transfer in text mode changes \r\n
    EXPECT_EQ(errorOf(text), "is a recording whose line ends were changed on its way here; "
                             "transfer it as a binary file");
    std::string newer = good;
    newer[8] = 2;
    EXPECT_EQ(errorOf(newer), "is a recording of version 2; this program reads version 1");
    std::string misspelt = good;
    misspelt.replace(good.find("displayID"), 9, "displayId");
    const std::string invalid = errorOf(misspelt);
    EXPECT_EQ(invalid.find("holds a configuration that is not valid: "), 0u) << invalid;
    EXPECT_TRUE(contains(invalid, "displayID"));
}

namespace {

// A recording of one device with these bytes in place of its records.
std::string withRecords(const std::string &records) {
    std::string bytes = record(wideDevices({"127.0.45.1"}), {}, 0);
    bytes.resize(bytes.size() - 3);
    return bytes + records;
}

} // namespace

TEST(PanelwallRecording, DamageIsToldWithItsPlace) {
    const std::string huge("\xff\xff\xff\xff\xff\xff\xff\xff\xff\x01", 10);
    const std::string good("\x01\x05\x01\x07", 4);
    const std::string place = std::to_string(withRecords("").size());
    const std::string afterGood = std::to_string(withRecords(good).size());
    const std::tuple<std::string, std::size_t, std::string> cases[] = {
        {"\x02", 0, "byte " + place + ": device 1, but there are only 1"},
        {good + "\x02", 1, "byte " + afterGood + ": device 1, but there are only 1"},
        {huge, 0, "device 18446744073709551614, but there are only 1"},
        {"\x01" + huge, 0, ": a time is too large"},
        {std::string("\x01\x00", 2) + huge, 0, ": a datagram's length is too large"},
        {std::string("\x01\x00\x80\x80\x04", 5), 0, ": a datagram's length is too large"},
        {std::string(10, '\x80'), 0, ": a device number is too large"},
        {std::string(9, '\x80') + "\x02", 0, ": a device number is too large"},
        {good + std::string("\x00\x00\x02", 3), 1, "ends after 1 datagram, but 2 were recorded"},
        {good + std::string("\x00\x00\x01\x00", 4), 1, "after its end"},
    };
    for (const auto &[records, count, error] : cases) {
        const Read read = readRecording(withRecords(records));
        EXPECT_TRUE(read.head);
        EXPECT_EQ(read.datagrams.size(), count) << error;
        EXPECT_TRUE(contains(read.error, error));
    }
}

TEST(PanelwallRecording, TimesDoNotOverflow) {
    std::string step;
    panelwall::appendNumber(step, 1);
    panelwall::appendNumber(step, panelwall::longestRecordedTime);
    panelwall::appendNumber(step, 0);
    const Read read = readRecording(withRecords(step + step));
    EXPECT_EQ(read.datagrams.size(), 1u);
    EXPECT_TRUE(contains(read.error, "a time is too large"));
}

// The length that a file claims does not determine how much memory is allocated.
TEST(PanelwallRecording, AClaimedLengthIsNotBelieved) {
    std::string bytes = "\x89PWR\r\n\x1a\n\x01";
    panelwall::appendNumber(bytes, 0);
    std::string huge = bytes;
    panelwall::appendNumber(huge, panelwall::longestRecordedDocument + 1);
    EXPECT_TRUE(
        contains(readRecording(huge).error, "the length of its configuration is too large"));
    panelwall::appendNumber(bytes, panelwall::longestRecordedDocument);
    rusage before;
    getrusage(RUSAGE_SELF, &before);
    for (int i = 0; i < 10; ++i)
        EXPECT_TRUE(contains(readRecording(bytes).error, "ends at byte"));
    rusage after;
    getrusage(RUSAGE_SELF, &after);
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 4096); // KiB
}

TEST(PanelwallRecording, DatagramsOfATurnAreOrderedByTheirTimes) {
    const std::string bytes = record(wideDevices({"127.0.45.1", "127.0.45.2"}),
                                     {{0, microseconds(10), panelOne(1)},
                                      {0, microseconds(30), panelOne(2)},
                                      {1, microseconds(20), panelOne(3)},
                                      {1, microseconds(30), panelOne(4)}},
                                     40);
    const Read read = readRecording(bytes);
    expectSame(read.datagrams,
               {{0, microseconds(10), panelOne(1)},
                {1, microseconds(20), panelOne(3)},
                {0, microseconds(30), panelOne(2)},
                {1, microseconds(30), panelOne(4)}},
               4);
    EXPECT_EQ(read.end, 40);
}

TEST(PanelwallRecording, WhatWasWrittenBeforeAKillCanBeRead) {
    const Folder folder;
    const auto start = panelwall::Clock::now();
    panelwall::RecordingWriter writer(folder.file("a"), wideDevices({"127.0.45.1"}), start);
    ASSERT_EQ(writer.error(), "");
    writer.note(0, panelOne(1), start);
    writer.flushBatch();
    writer.note(0, panelOne(2), start);
    const Read read = readRecording(fileText(folder.file("a")));
    EXPECT_EQ(read.datagrams.size(), 1u);
    EXPECT_TRUE(contains(read.error, "after 1 whole datagram,"));
}

TEST(PanelwallRecording, AFullDiskIsToldOnce) {
    const auto start = panelwall::Clock::now();
    panelwall::RecordingWriter writer("/dev/full", wideDevices({"127.0.45.1"}), start);
    EXPECT_EQ(writer.error(), "No space left on device");
    writer.note(0, panelOne(1), start);
    writer.finish(start);
    EXPECT_EQ(writer.error(), "No space left on device");
    EXPECT_EQ(writer.datagrams(), 0u);
}
