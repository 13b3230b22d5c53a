#include "tools/lights/datagram.h"

#include <gtest/gtest.h>
#include <random>

using namespace lights;

using Bytes = std::vector<std::uint8_t>;

static void expectRecord(const Record &record, int id, int red, int green, int blue,
                         int transitionTime) {
    EXPECT_EQ(record.id, id);
    EXPECT_EQ(record.colour.red, red);
    EXPECT_EQ(record.colour.green, green);
    EXPECT_EQ(record.colour.blue, blue);
    EXPECT_EQ(record.transitionTime, transitionTime);
}

TEST(PanelwallDatagram, LayoutFollowsTheControlVersion) {
    EXPECT_EQ(layoutOf(1), Layout::Narrow);
    for (const int version : {0, 2, -1, 3, 257})
        EXPECT_EQ(layoutOf(version), Layout::Wide) << version;
}

TEST(PanelwallDatagram, IdentifiersLoseTheirHighBits) {
    EXPECT_EQ(wireId(Layout::Narrow, 3), 3);
    EXPECT_EQ(wireId(Layout::Narrow, 300), 44);
    EXPECT_EQ(wireId(Layout::Narrow, -1), 255);
    EXPECT_EQ(wireId(Layout::Wide, 300), 300);
    EXPECT_EQ(wireId(Layout::Wide, 65536 + 7), 7);
    EXPECT_EQ(wireId(Layout::Wide, -1), 65535);
}

TEST(PanelwallDatagram, ReadsNarrowRecords) {
    const auto decoding = decode(Layout::Narrow, Bytes{2, 3, 1, 10, 20, 30, 0, 5, //
                                                       44, 1, 255, 254, 253, 0, 200});
    ASSERT_EQ(decoding.malformed, "");
    ASSERT_EQ(decoding.records.size(), 2u);
    expectRecord(decoding.records[0], 3, 10, 20, 30, 5);
    expectRecord(decoding.records[1], 44, 255, 254, 253, 200);
}

TEST(PanelwallDatagram, ReadsWideRecords) {
    const auto decoding = decode(Layout::Wide, Bytes{0, 2, 1, 2, 10, 20, 30, 0, 0, 5, //
                                                     0, 9, 255, 254, 253, 0, 2, 1});
    ASSERT_EQ(decoding.malformed, "");
    ASSERT_EQ(decoding.records.size(), 2u);
    expectRecord(decoding.records[0], 258, 10, 20, 30, 5);
    expectRecord(decoding.records[1], 9, 255, 254, 253, 513);
}

TEST(PanelwallDatagram, HeaderAloneIsWellFormed) {
    EXPECT_EQ(decode(Layout::Narrow, Bytes{0}).malformed, "");
    EXPECT_EQ(decode(Layout::Wide, Bytes{0, 0}).malformed, "");
}

TEST(PanelwallDatagram, NarrowCountHoldsTheLowBitsOfTheNumberOfRecords) {
    Bytes bytes{300 & 0xff};
    for (int i = 0; i < 300; ++i)
        bytes.insert(bytes.end(), {static_cast<std::uint8_t>(i), 1, 1, 2, 3, 0, 4});
    const auto decoding = decode(Layout::Narrow, bytes);
    ASSERT_EQ(decoding.malformed, "");
    ASSERT_EQ(decoding.records.size(), 300u);
    expectRecord(decoding.records[299], 43, 1, 2, 3, 4);
    bytes[0] = 45;
    EXPECT_EQ(decode(Layout::Narrow, bytes).malformed,
              "2101 bytes, but a panel count of 45 needs 316");
}

TEST(PanelwallDatagram, EveryOtherLengthIsMalformed) {
    const Bytes narrow{1, 3, 1, 10, 20, 30, 0, 5};
    const Bytes wide{0, 1, 0, 3, 10, 20, 30, 0, 0, 5};
    for (std::size_t size = 0; size < 40; ++size) {
        Bytes bytes = narrow;
        bytes.resize(size);
        EXPECT_EQ(decode(Layout::Narrow, bytes).malformed.empty(), size == 8) << size;
        bytes = wide;
        bytes.resize(size);
        EXPECT_EQ(decode(Layout::Wide, bytes).malformed.empty(), size == 10) << size;
    }
    EXPECT_EQ(decode(Layout::Narrow, Bytes{}).malformed, "0 bytes, too short for the panel count");
    EXPECT_EQ(decode(Layout::Wide, Bytes{0}).malformed, "1 byte, too short for the panel count");
    EXPECT_EQ(decode(Layout::Wide, Bytes{0, 1, 0}).malformed,
              "3 bytes, but a panel count of 1 needs 10");
}

TEST(PanelwallDatagram, OneLayoutIsMalformedAsTheOther) {
    EXPECT_NE(decode(Layout::Wide, Bytes{1, 3, 1, 10, 20, 30, 0, 5}).malformed, "");
    EXPECT_NE(decode(Layout::Narrow, Bytes{0, 1, 0, 3, 10, 20, 30, 0, 0, 5}).malformed, "");
}

TEST(PanelwallDatagram, FrameCountMustBeOne) {
    const auto decoding = decode(Layout::Narrow, Bytes{2, 3, 1, 10, 20, 30, 0, 5, //
                                                       4, 2, 10, 20, 30, 0, 5});
    EXPECT_EQ(decoding.malformed, "record 1: frame count 2, not 1");
    EXPECT_TRUE(decoding.records.empty());
}

TEST(PanelwallDatagram, WhiteMustBeZero) {
    EXPECT_EQ(decode(Layout::Narrow, Bytes{1, 3, 1, 10, 20, 30, 7, 5}).malformed,
              "record 0: white 7, not 0");
    EXPECT_EQ(decode(Layout::Wide, Bytes{0, 1, 0, 3, 10, 20, 30, 9, 0, 5}).malformed,
              "record 0: white 9, not 0");
}

TEST(PanelwallDatagram, ForeignRecordsAreFound) {
    const KnownIds known{{3, 1}, {44, 2}};
    const auto make = [](std::vector<int> ids) {
        std::vector<Record> records;
        for (const int id : ids)
            records.push_back({static_cast<std::uint16_t>(id), {}, 0});
        return records;
    };
    EXPECT_EQ(findForeignRecord(make({}), known), "");
    EXPECT_EQ(findForeignRecord(make({44}), known), "");
    EXPECT_EQ(findForeignRecord(make({44, 3, 44}), known), "");
    EXPECT_EQ(findForeignRecord(make({3, 5}), known),
              "record 1: panel id 5 is unknown to this device");
    EXPECT_EQ(findForeignRecord(make({3, 44, 3}), known),
              "record 2: panel id 3 occurs in more records than panels have it");
}

// Every accepted datagram must be exactly what a sender would have written.
TEST(PanelwallDatagram, RandomBytesAreRefusedOrReadBackExactly) {
    std::mt19937 random(41);
    const auto below = [&](unsigned limit) { return static_cast<unsigned>(random() % limit); };
    int accepted = 0;
    for (int round = 0; round < 40000; ++round) {
        const Layout layout = below(2) == 0 ? Layout::Narrow : Layout::Wide;
        Bytes bytes(below(120));
        for (auto &byte : bytes)
            byte = static_cast<std::uint8_t>(below(4) == 0 ? below(256) : below(2));
        const auto decoding = decode(layout, bytes);
        if (!decoding.malformed.empty()) {
            EXPECT_TRUE(decoding.records.empty());
            continue;
        }
        ++accepted;
        Bytes again;
        const auto number = [&](std::size_t value) {
            if (layout == Layout::Wide)
                again.push_back(static_cast<std::uint8_t>(value >> 8));
            again.push_back(static_cast<std::uint8_t>(value));
        };
        number(decoding.records.size());
        for (const Record &record : decoding.records) {
            number(record.id);
            if (layout == Layout::Narrow)
                again.push_back(1);
            again.insert(again.end(),
                         {record.colour.red, record.colour.green, record.colour.blue, 0});
            number(record.transitionTime);
        }
        EXPECT_EQ(again, bytes);
    }
    EXPECT_GT(accepted, 100);
}
