// The packets of each protocol, byte by byte.
#include "tests/tools/lightbridge/packets.h"

#include <gtest/gtest.h>

using namespace test;
using lightbridge::Stream;

namespace {

Datagram zeros(std::size_t size) {
    return Datagram(size);
}

Datagram text(const std::string &letters, std::size_t size) {
    Datagram all(letters.begin(), letters.end());
    all.resize(size);
    return all;
}

const Stream e131Stream{0,       3, 7, 150, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16},
                        "lights"};

} // namespace

TEST(LightbridgeDdp, IsOnePacketThatIsShownAtOnce) {
    const auto packets = encoded(lightbridge::encodeDdp, {}, bytes("ff 80 00 01 02 03"));
    ASSERT_EQ(packets.size(), 1u);
    EXPECT_EQ(packets[0].bytes, bytes("41 01 0b 01 00 00 00 00 00 06 ff 80 00 01 02 03"));
}

TEST(LightbridgeDdp, BeginsAtTheFirstPixelAndNamesWhite) {
    const Stream stream{70'000, 4};
    const auto packets = encoded(lightbridge::encodeDdp, stream, bytes("ff 80 00 40"));
    ASSERT_EQ(packets.size(), 1u);
    EXPECT_EQ(packets[0].bytes, bytes("41 01 1b 01 00 04 45 c0 00 04 ff 80 00 40"));
}

TEST(LightbridgeDdp, SplitsAfter480PixelsAndShowsThemWithTheLast) {
    const Datagram data = counting(3 * 1000);
    const auto packets = encoded(lightbridge::encodeDdp, {}, data, 4);
    ASSERT_EQ(packets.size(), 3u);
    EXPECT_EQ(packets[0].bytes, bytes("40 0d 0b 01 00 00 00 00 05 a0") + part(data, 0, 1440));
    EXPECT_EQ(packets[1].bytes, bytes("40 0e 0b 01 00 00 05 a0 05 a0") + part(data, 1440, 1440));
    EXPECT_EQ(packets[2].bytes, bytes("41 0f 0b 01 00 00 0b 40 00 78") + part(data, 2880, 120));
    EXPECT_EQ(encoded(lightbridge::encodeDdp, {}, counting(1440)).size(), 1u);
    EXPECT_EQ(encoded(lightbridge::encodeDdp, {70, 4}, counting(1444)).size(), 2u);
}

// 0 would mean that there are no sequence numbers.
TEST(LightbridgeDdp, CountsPacketsFrom1To15) {
    int expected = 1;
    for (std::uint64_t frame = 0; frame < 40; ++frame)
        for (const auto &packet : encoded(lightbridge::encodeDdp, {}, counting(1500), frame)) {
            EXPECT_EQ(packet.bytes[1], expected);
            expected = expected == 15 ? 1 : expected + 1;
        }
}

TEST(LightbridgeE131, IsByteForByteAsDescribed) {
    const auto packets =
        encoded(lightbridge::encodeE131, e131Stream, bytes("ff 80 00 01 02 03"), 0x1fe);
    ASSERT_EQ(packets.size(), 1u);
    const Datagram expected =
        bytes("00 10 00 00 41 53 43 2d 45 31 2e 31 37 00 00 00 70 74 00 00 00 04"
              " 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10"
              " 70 5e 00 00 00 02") +
        text("lights", 64) +
        bytes("96 00 00 fe 00 00 07 70 11 02 a1 00 00 00 01 00 07 00 ff 80 00 01 02 03");
    EXPECT_EQ(packets[0].bytes, expected);
    EXPECT_EQ(packets[0].universe, 7);
}

TEST(LightbridgeE131, TellsTheEndInTheLastFrame) {
    const Datagram data = counting(30);
    const auto going = encoded(lightbridge::encodeE131, e131Stream, data, 5);
    const auto last = encoded(lightbridge::encodeE131, e131Stream, data, 5, true);
    Datagram expected = going.at(0).bytes;
    expected.at(112) = 0x40;
    EXPECT_EQ(last.at(0).bytes, expected);
}

TEST(LightbridgeE131, FillsUniversesWithWholePixels) {
    Stream stream = e131Stream;
    const Datagram data = counting(3 * 341);
    auto packets = encoded(lightbridge::encodeE131, stream, data, 9);
    ASSERT_EQ(packets.size(), 3u);
    for (std::size_t i = 0; i < packets.size(); ++i) {
        const std::size_t size = i < 2 ? 510 : 3;
        EXPECT_EQ(packets[i].universe, 7 + static_cast<int>(i));
        EXPECT_EQ(part(packets[i].bytes, 111, 4), bytes("09 00 00 0" + std::to_string(7 + i)));
        EXPECT_EQ(packets[i].bytes.size(), 126 + (i < 2 ? size : 6));
        EXPECT_EQ(part(packets[i].bytes, 126, size), part(data, 510 * i, size));
    }
    EXPECT_EQ(part(packets[0].bytes, 115, 11), bytes("72 09 02 a1 00 00 00 01 01 ff 00"));

    stream.channels = 4;
    packets = encoded(lightbridge::encodeE131, stream, counting(4 * 129));
    ASSERT_EQ(packets.size(), 2u);
    EXPECT_EQ(packets[0].bytes.size(), 126u + 512u);
    EXPECT_EQ(packets[1].bytes.size(), 126u + 6u);
}

TEST(LightbridgeE131, BeginsWithinAUniverse) {
    Stream stream = e131Stream;
    stream.firstPixel = 170 + 168;
    const auto packets = encoded(lightbridge::encodeE131, stream, counting(9));
    ASSERT_EQ(packets.size(), 2u);
    EXPECT_EQ(packets[0].universe, 8);
    EXPECT_EQ(part(packets[0].bytes, 126, 510), zeros(504) + bytes("01 02 03 04 05 06"));
    EXPECT_EQ(packets[1].universe, 9);
    EXPECT_EQ(part(packets[1].bytes, 123, 9), bytes("00 07 00 07 08 09 00 00 00"));
}

TEST(LightbridgeE131, CutsLongNames) {
    Stream stream = e131Stream;
    stream.senderName = std::string(100, 'x');
    const auto packets = encoded(lightbridge::encodeE131, stream, counting(3));
    EXPECT_EQ(part(packets.at(0).bytes, 44, 64), text(std::string(63, 'x'), 64));
}

TEST(LightbridgeArtNet, IsByteForByteAsDescribed) {
    const Stream stream{0, 3, 0x1234};
    const auto packets = encoded(lightbridge::encodeArtNet, stream, bytes("ff 80 00 01 02 03"));
    ASSERT_EQ(packets.size(), 1u);
    EXPECT_EQ(packets[0].bytes, bytes("41 72 74 2d 4e 65 74 00 00 50 00 0e 01 00 34 12 00 06"
                                      " ff 80 00 01 02 03"));
}

TEST(LightbridgeArtNet, HasAnEvenLength) {
    const auto packets = encoded(lightbridge::encodeArtNet, {}, bytes("ff 80 01"));
    ASSERT_EQ(packets.size(), 1u);
    EXPECT_EQ(part(packets[0].bytes, 12, 10), bytes("01 00 00 00 00 04 ff 80 01 00"));
}

TEST(LightbridgeArtNet, ShowsSeveralUniversesAtOnce) {
    const Datagram data = counting(3 * 171);
    const auto packets = encoded(lightbridge::encodeArtNet, {}, data, 254);
    ASSERT_EQ(packets.size(), 3u);
    EXPECT_EQ(part(packets[0].bytes, 12, 6), bytes("ff 00 00 00 01 fe"));
    EXPECT_EQ(part(packets[0].bytes, 18, 510), part(data, 0, 510));
    EXPECT_EQ(part(packets[1].bytes, 12, 10),
              bytes("ff 00 01 00 00 04") + part(data, 510, 3) + bytes("00"));
    EXPECT_EQ(packets[2].bytes, bytes("41 72 74 2d 4e 65 74 00 00 52 00 0e 00 00"));
}

// 0 would mean that there are no sequence numbers.
TEST(LightbridgeArtNet, CountsFramesFrom1To255) {
    int expected = 1;
    for (std::uint64_t frame = 0; frame < 600; ++frame) {
        EXPECT_EQ(encoded(lightbridge::encodeArtNet, {}, counting(3), frame).at(0).bytes[12],
                  expected);
        expected = expected == 255 ? 1 : expected + 1;
    }
}

TEST(LightbridgeWled, SendsShortStripsFromTheFirstPixel) {
    const Datagram data = counting(3 * 490);
    const auto packets = encoded(lightbridge::encodeWled, {}, data);
    ASSERT_EQ(packets.size(), 1u);
    EXPECT_EQ(packets[0].bytes, bytes("02 02") + data);
    const auto white = encoded(lightbridge::encodeWled, {0, 4}, counting(4 * 367));
    ASSERT_EQ(white.size(), 1u);
    EXPECT_EQ(white[0].bytes, bytes("03 02") + counting(4 * 367));
}

TEST(LightbridgeWled, SendsLongStripsInParts) {
    const Datagram data = counting(3 * 1000);
    const auto packets = encoded(lightbridge::encodeWled, {}, data);
    ASSERT_EQ(packets.size(), 3u);
    EXPECT_EQ(packets[0].bytes, bytes("04 02 00 00") + part(data, 0, 1467));
    EXPECT_EQ(packets[1].bytes, bytes("04 02 01 e9") + part(data, 1467, 1467));
    EXPECT_EQ(packets[2].bytes, bytes("04 02 03 d2") + part(data, 2934, 66));
    EXPECT_EQ(encoded(lightbridge::encodeWled, {300}, bytes("01 02 03")).at(0).bytes,
              bytes("04 02 01 2c 01 02 03"));
}

TEST(LightbridgeWled, StaysAsItIsAfterTheLastFrame) {
    EXPECT_EQ(encoded(lightbridge::encodeWled, {}, counting(3), 0, true).at(0).bytes,
              bytes("02 ff 01 02 03"));
    EXPECT_EQ(encoded(lightbridge::encodeWled, {9}, counting(3), 0, true).at(0).bytes,
              bytes("04 ff 00 09 01 02 03"));
}
