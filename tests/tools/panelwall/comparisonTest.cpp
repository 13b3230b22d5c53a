#include "tests/support/expectations.h"
#include "tests/tools/panelwall/recordings.h"
#include "tools/recording/compareRecordings.h"

#include <gtest/gtest.h>
#include <sstream>

using namespace test;
using panelwall::Comparison;
using panelwall::first;
using panelwall::second;
using std::chrono::microseconds;

namespace {

Comparison compare(const std::string &left, const std::string &right,
                   std::size_t maxHeld = 64u << 20) {
    return panelwall::compareRecordings(
        [&](panelwall::Side side) {
            return panelwall::RecordingReader(
                std::make_unique<std::istringstream>(side == first ? left : right));
        },
        maxHeld);
}

// A datagram every 40 ms, in these shades of red.
std::string shades(const std::vector<int> &reds, long delay = 0) {
    std::vector<RecordedDatagram> datagrams;
    long time = delay;
    for (const int red : reds) {
        datagrams.push_back({0, microseconds(time), panelOne(red)});
        time += 40'000;
    }
    return record(wideDevices({"127.0.45.1"}), datagrams, time);
}

std::vector<int> countedShades(int count) {
    std::vector<int> reds;
    for (int i = 0; i < count; ++i)
        reds.push_back(i);
    return reds;
}

std::string textOf(const Comparison &comparison) {
    std::string text;
    for (const std::string &line : panelwall::describe(comparison))
        text += line + "\n";
    return text;
}

} // namespace

TEST(PanelwallComparison, TheSameContentAtOtherTimesIsTheSame) {
    const auto comparison = compare(shades({1, 2, 3}), shades({1, 2, 3}, 5000));
    EXPECT_FALSE(comparison.differs());
    const auto &found = comparison.devices.at(0).findings;
    EXPECT_EQ(found.same, 3u);
    EXPECT_EQ(found.leastDelay, microseconds(5000));
    EXPECT_EQ(found.greatestDelay, microseconds(5000));
    EXPECT_DOUBLE_EQ(found.intervals[second].mean(), 40.0);
    EXPECT_EQ(textOf(comparison),
              "device 0 at \"127.0.45.1\", UDP port 60222: the same\n"
              "    datagrams: 3 and 3, of them malformed 0 and 0; 3 the same, 0 changed, 0 only in "
              "the first, 0 only in the second\n"
              "    timing: intervals 40.0 ms (spread 0.0, longest 40.0) and 40.0 ms (spread 0.0, "
              "longest 40.0); the same datagrams come 5.0 to 5.0 ms later in the second\n"
              "the same: 1 device\n");
}

TEST(PanelwallComparison, OneChangedDatagramIsFound) {
    auto reds = countedShades(200);
    const auto left = shades(reds);
    reds[150] = 7;
    const auto comparison = compare(left, shades(reds));
    EXPECT_TRUE(comparison.differs());
    const auto &found = comparison.devices.at(0).findings;
    EXPECT_EQ(found.same, 199u);
    EXPECT_EQ(found.changed, 1u);
    EXPECT_TRUE(contains(textOf(comparison),
                         "first difference: datagram 150 at 6.000 s and datagram 150 "
                         "at 6.000 s: panel id 1: colour (150, 0, 0) and (7, 0, 0)\n"));
    EXPECT_TRUE(contains(textOf(comparison), "different: 1 of 1 device\n"));
}

TEST(PanelwallComparison, DatagramsLeftOutAndAddedAreFound) {
    auto reds = countedShades(200);
    const auto left = shades(reds);
    reds.erase(reds.begin() + 20, reds.begin() + 50);
    reds.insert(reds.begin() + 100, 255);
    const auto comparison = compare(left, shades(reds));
    const auto &found = comparison.devices.at(0).findings;
    EXPECT_EQ(found.same, 170u);
    EXPECT_EQ(found.changed, 0u);
    EXPECT_EQ(found.only[first], 30u);
    EXPECT_EQ(found.only[second], 1u);
    EXPECT_EQ(found.firstDifference[first]->number, 20u);
    EXPECT_FALSE(found.firstDifference[second]);
}

TEST(PanelwallComparison, ALongerRecordingHasTheRestAlone) {
    const auto comparison = compare(shades(countedShades(3)), shades(countedShades(250)));
    const auto &found = comparison.devices.at(0).findings;
    EXPECT_EQ(found.same, 3u);
    EXPECT_EQ(found.only[second], 247u);
    EXPECT_EQ(found.datagrams[first], 3u);
    EXPECT_EQ(found.datagrams[second], 250u);
}

TEST(PanelwallComparison, NothingInCommonIsAllChanged) {
    std::vector<int> blank(150, 255);
    const auto comparison = compare(shades(countedShades(150)), shades(blank));
    const auto &found = comparison.devices.at(0).findings;
    EXPECT_EQ(found.same, 0u);
    EXPECT_EQ(found.changed, 150u);
}

TEST(PanelwallComparison, DevicesAreMatchedByAddressAndPort) {
    const auto left =
        record(wideDevices({"127.0.45.1", "127.0.45.2"}),
               {{0, microseconds(0), panelOne(1)}, {1, microseconds(1), panelOne(2)}}, 10);
    const auto right = record(wideDevices({"127.0.45.2", "127.0.45.3"}),
                              {{0, microseconds(0), panelOne(2)}, {1, microseconds(1), {}}}, 10);
    const auto comparison = compare(left, right);
    ASSERT_EQ(comparison.devices.size(), 3u);
    EXPECT_FALSE(comparison.devices[1].differs());
    EXPECT_EQ(comparison.devices[1].findings.same, 1u);
    const auto text = textOf(comparison);
    EXPECT_TRUE(
        contains(text, "device 0 at \"127.0.45.1\", UDP port 60222: only in the first, with 1 "));
    EXPECT_TRUE(
        contains(text, "device 1 at \"127.0.45.3\", UDP port 60222: only in the second, with 1 "));
    EXPECT_EQ(comparison.devices[2].findings.malformed[second], 1u);
}

TEST(PanelwallComparison, ConfigurationsAreComparedToo) {
    auto document = wideDevices({"127.0.45.1"});
    const auto left = record(document, {}, 10);
    document.mode = 2;
    document.devices[0].panels[0].centroidX = 101;
    const auto text = textOf(compare(left, record(document, {}, 10)));
    EXPECT_TRUE(contains(text, "configuration: mode: 0 and 2\n"));
    EXPECT_TRUE(contains(text, "1 at (100, 200) and 1 at (101, 200)\n"));
    EXPECT_TRUE(contains(text, "different: 1 of 1 device\n"));
}

// The datagrams of a device are at the beginning of one recording and at the end of the other.
TEST(PanelwallComparison, WhatOutgrowsTheMemoryIsReadAgain) {
    const auto document = wideDevices({"127.0.45.1", "127.0.45.2", "127.0.45.3"});
    std::vector<RecordedDatagram> datagrams[2];
    for (const std::size_t side : {0u, 1u}) {
        for (int i = 0; i < 3000; ++i) {
            const int turn = i / 1000;
            const auto device = static_cast<std::size_t>(side == 0 ? turn : 2 - turn);
            datagrams[side].push_back({device, microseconds(i), panelOne(i % 1000 / 4, i % 4)});
        }
    }
    const auto left = record(document, datagrams[0], 4000);
    datagrams[1][1500].bytes = {1, 2, 3}; // of device 1
    const auto right = record(document, datagrams[1], 4000);
    for (const std::size_t maxHeld : {std::size_t{1} << 26, std::size_t{20'000}, std::size_t{0}}) {
        const auto comparison = compare(left, right, maxHeld);
        EXPECT_EQ(comparison.devices[0].findings.same, 1000u) << maxHeld;
        EXPECT_EQ(comparison.devices[1].findings.same, 999u) << maxHeld;
        EXPECT_EQ(comparison.devices[1].findings.changed, 1u) << maxHeld;
        EXPECT_EQ(comparison.devices[1].findings.firstDifference[first]->number, 500u) << maxHeld;
        EXPECT_EQ(comparison.devices[2].findings.same, 1000u) << maxHeld;
    }
}

TEST(PanelwallComparison, ATruncatedRecordingIsComparedUpToItsFault) {
    const auto left = shades({1, 2, 3});
    const auto comparison = compare(left, left.substr(0, left.size() - 10));
    EXPECT_EQ(comparison.errors[first], "");
    EXPECT_TRUE(contains(comparison.errors[second], "after 2 whole datagrams"));
    EXPECT_EQ(comparison.devices.at(0).findings.same, 2u);
}

TEST(PanelwallComparison, SaysWhatDiffersInTwoDatagrams) {
    using Bytes = std::vector<std::uint8_t>;
    const auto difference = [](const Bytes &left, const Bytes &right) {
        return panelwall::describeDifference(panelwall::Layout::Wide, left, right);
    };
    const Bytes one{0, 1, 0, 7, 1, 2, 3, 0, 0, 5};
    EXPECT_EQ(difference(one, {0, 1, 0, 8, 1, 2, 3, 0, 0, 5}), "record 0: panel id 7 and 8");
    EXPECT_EQ(difference(one, {0, 1, 0, 7, 1, 2, 3, 0, 1, 5}),
              "panel id 7: transition time 5 and 261");
    EXPECT_EQ(difference(one, {0, 0}), "1 and 0 records");
    EXPECT_EQ(difference(one, {}), "well-formed and malformed (0 bytes, too short for the panel "
                                   "count)");
    EXPECT_EQ(difference({0, 9, 1}, {0, 9, 2}), "from byte 2 of 3 and 3");
}
