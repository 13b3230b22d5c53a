// The readers of the lights' protocols, from bytes that were written by hand.
#include "tests/tools/lightbridge/ddpReader.h"
#include "tests/tools/lightbridge/wledReader.h"

#include <gtest/gtest.h>

using test::Datagram;
using test::DdpReader;
using test::WledPixel;
using test::WledReader;

namespace {

// Two RGB pixels at offset 0, shown at once.
const Datagram twoPixels{0x41, 1, 0x0b, 1, 0, 0, 0, 0, 0, 6, 10, 20, 30, 40, 50, 60};

// Twelve bytes at offset 0: whole pixels of three and of four bytes.
const Datagram twelveBytes{0x41, 1, 0x0b, 1, 0, 0, 0, 0, 0, 12, //
                           1,    2, 3,    4, 5, 6, 7, 8, 9, 10, 11, 12};

Datagram changed(Datagram packet, std::size_t at, unsigned value) {
    packet.at(at) = static_cast<std::uint8_t>(value);
    return packet;
}

// `packet` followed by `count` bytes that differ from their neighbours.
Datagram extended(Datagram packet, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        packet.push_back(static_cast<std::uint8_t>(i % 251));
    return packet;
}

std::string ddpError(const Datagram &packet) {
    return DdpReader().read(packet).malformed;
}

std::string wledError(const Datagram &packet, std::size_t length = 3) {
    WledReader reader(length);
    const auto reading = reader.read(packet);
    if (!reading.malformed.empty())
        EXPECT_EQ(reader.pixels(), std::vector<WledPixel>(length));
    return reading.malformed;
}

} // namespace

TEST(DdpReader, APushShowsAFrame) {
    DdpReader reader;
    const auto reading = reader.read(twoPixels);
    EXPECT_EQ(reading.malformed, "");
    ASSERT_TRUE(reading.frame);
    EXPECT_EQ(reading.frame->channels, 3u);
    EXPECT_EQ(reading.frame->bytes, (Datagram{10, 20, 30, 40, 50, 60}));
    EXPECT_EQ(reader.unshown(), 0u);
}

TEST(DdpReader, ReadsPixelsWithWhite) {
    const auto reading =
        DdpReader().read({0x41, 9, 0x1b, 1, 0, 0, 0, 0, 0, 8, 1, 2, 3, 4, 5, 6, 7, 8});
    EXPECT_EQ(reading.malformed, "");
    ASSERT_TRUE(reading.frame);
    EXPECT_EQ(reading.frame->channels, 4u);
    EXPECT_EQ(reading.frame->bytes, (Datagram{1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST(DdpReader, JoinsThePacketsOfAFrame) {
    DdpReader reader;
    // 480 pixels, 480 pixels from 0x05a0 and one from 0x0b40; and the same once more
    for (const unsigned sequence : {1u, 4u}) {
        const Datagram first =
            extended(changed({0x40, 0, 0x0b, 1, 0, 0, 0, 0, 0x05, 0xa0}, 1, sequence), 1440);
        const Datagram second = extended(
            changed({0x40, 0, 0x0b, 1, 0, 0, 0x05, 0xa0, 0x05, 0xa0}, 1, sequence + 1), 1440);
        const Datagram third =
            changed({0x41, 0, 0x0b, 1, 0, 0, 0x0b, 0x40, 0, 3, 77, 88, 99}, 1, sequence + 2);
        auto reading = reader.read(first);
        EXPECT_EQ(reading.malformed, "");
        EXPECT_FALSE(reading.frame);
        EXPECT_EQ(reader.unshown(), 1440u);
        reading = reader.read(second);
        EXPECT_EQ(reading.malformed, "");
        EXPECT_FALSE(reading.frame);
        EXPECT_EQ(reader.unshown(), 2880u);
        reading = reader.read(third);
        EXPECT_EQ(reading.malformed, "");
        ASSERT_TRUE(reading.frame);
        Datagram whole = extended(extended({}, 1440), 1440);
        whole.insert(whole.end(), {77, 88, 99});
        EXPECT_EQ(reading.frame->bytes, whole);
        EXPECT_EQ(reader.unshown(), 0u);
    }
}

TEST(DdpReader, OffsetsHaveFourBytes) {
    DdpReader reader(0x01020304);
    EXPECT_EQ(reader.read({0x40, 1, 0x0b, 1, 1, 2, 3, 4, 0, 3, 7, 8, 9}).malformed, "");
    const auto reading = reader.read({0x41, 2, 0x0b, 1, 1, 2, 3, 7, 0, 3, 4, 5, 6});
    EXPECT_EQ(reading.malformed, "");
    ASSERT_TRUE(reading.frame);
    EXPECT_EQ(reading.frame->bytes, (Datagram{7, 8, 9, 4, 5, 6}));
    EXPECT_EQ(reader.read(changed(twoPixels, 1, 3)).malformed, "byte 4: offset 0, not 16909060");
}

TEST(DdpReader, SequenceNumbersCountFrom1To15AndBeginAgainAt1) {
    DdpReader reader;
    for (const unsigned sequence :
         {14u, 15u, 1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 9u, 10u, 11u, 12u, 13u, 14u, 15u})
        EXPECT_EQ(reader.read(changed(twoPixels, 1, sequence)).malformed, "") << sequence;
    EXPECT_EQ(reader.read(changed(twoPixels, 1, 0)).malformed,
              "byte 1: sequence number 0, not 1 to 15");
    EXPECT_EQ(reader.read(changed(twoPixels, 1, 16)).malformed,
              "byte 1: sequence number 16, not 1 to 15");
    EXPECT_EQ(reader.read(changed(twoPixels, 1, 15)).malformed,
              "byte 1: sequence number 15, not 1");
    EXPECT_EQ(reader.read(changed(twoPixels, 1, 2)).malformed, "byte 1: sequence number 2, not 1");
    EXPECT_EQ(reader.read(changed(twoPixels, 1, 1)).malformed, "");
}

// In a first packet that also fits RGBW.
TEST(DdpReader, EveryOtherValueOfAHeaderByteIsMalformed) {
    const auto accepted = [](std::size_t at, unsigned value) {
        switch (at) {
        case 0:
            return value == 0x40 || value == 0x41;
        case 1:
            return value >= 1 && value <= 15;
        case 2:
            return value == 0x0b || value == 0x1b;
        default:
            return value == twelveBytes[at];
        }
    };
    const char *const fields[] = {"byte 0: ", "byte 1: ", "byte 2: ", "byte 3: ", "byte 4: ",
                                  "byte 4: ", "byte 4: ", "byte 4: ", "byte 8: ", "byte 8: "};
    for (std::size_t at = 0; at < 10; ++at) {
        for (unsigned value = 0; value < 256; ++value) {
            const std::string error = ddpError(changed(twelveBytes, at, value));
            const std::string expected = accepted(at, value) ? "" : fields[at];
            EXPECT_EQ(error.substr(0, 8), expected) << at << " " << value;
        }
    }
}

TEST(DdpReader, SaysWhichFieldIsWrong) {
    EXPECT_EQ(ddpError(changed(twoPixels, 0, 0x81)), "byte 0: version 2, not 1");
    EXPECT_EQ(ddpError(changed(twoPixels, 0, 0x51)), "byte 0: flags 0x51, neither 0x40 nor 0x41");
    EXPECT_EQ(ddpError(changed(twoPixels, 2, 0x0c)),
              "byte 2: data type 0x0c, neither 0x0b (RGB) nor 0x1b (RGBW)");
    EXPECT_EQ(ddpError(changed(twoPixels, 3, 0)), "byte 3: destination 0, not 1");
    EXPECT_EQ(ddpError(changed(twoPixels, 7, 6)), "byte 4: offset 6, not 0");
    EXPECT_EQ(ddpError(changed(twoPixels, 8, 6)), "byte 8: length 1542, but 6 bytes follow");
    EXPECT_EQ(ddpError(changed(twoPixels, 2, 0x1b)), "byte 8: length 6, not a multiple of 4");
}

TEST(DdpReader, EveryOtherPacketSizeIsMalformed) {
    for (std::size_t size = 0; size < 40; ++size) {
        Datagram packet = twoPixels;
        packet.resize(size);
        const std::string error = ddpError(packet);
        const std::string at = std::to_string(size);
        if (size < 10)
            EXPECT_EQ(error, "byte " + at + ": the packet ends within its header");
        else if (size == 16)
            EXPECT_EQ(error, "");
        else
            EXPECT_EQ(error,
                      "byte 8: length 6, but " + std::to_string(size - 10) + " bytes follow");
    }
}

TEST(DdpReader, APacketHolds1To1440Bytes) {
    EXPECT_EQ(ddpError({0x41, 1, 0x0b, 1, 0, 0, 0, 0, 0, 0}), "byte 8: length 0, not 1 to 1440");
    EXPECT_EQ(ddpError(extended({0x41, 1, 0x1b, 1, 0, 0, 0, 0, 0x05, 0xa0}, 1440)), "");
    EXPECT_EQ(ddpError(extended({0x41, 1, 0x0b, 1, 0, 0, 0, 0, 0x05, 0xa3}, 1443)),
              "byte 8: length 1443, not 1 to 1440");
}

TEST(DdpReader, PacketsOfAFrameContinueEachOther) {
    for (const unsigned offset : {0u, 3u, 9u}) {
        DdpReader reader;
        EXPECT_EQ(reader.read(changed(twoPixels, 0, 0x40)).malformed, "");
        EXPECT_EQ(reader.read(changed(changed(twoPixels, 1, 2), 7, offset)).malformed,
                  "byte 4: offset " + std::to_string(offset) + ", not 6");
    }
}

TEST(DdpReader, AFrameHasOneDataType) {
    DdpReader reader;
    EXPECT_EQ(reader.read(changed(twelveBytes, 0, 0x40)).malformed, "");
    const Datagram next = changed(changed(twelveBytes, 1, 2), 7, 12);
    EXPECT_EQ(reader.read(changed(next, 2, 0x1b)).malformed,
              "byte 2: data type 0x1b within a frame of the other type");
    EXPECT_EQ(reader.read(next).malformed, "");
    EXPECT_EQ(reader.read(changed(changed(twelveBytes, 1, 3), 2, 0x1b)).malformed, "");
}

TEST(DdpReader, AMalformedPacketChangesNothing) {
    DdpReader reader;
    EXPECT_EQ(reader.read(changed(twoPixels, 0, 0x40)).malformed, "");
    const Datagram next{0x41, 2, 0x0b, 1, 0, 0, 0, 6, 0, 3, 7, 8, 9};
    for (std::size_t at = 0; at < 10; ++at) {
        const auto reading = reader.read(changed(next, at, next[at] ^ 0x80));
        EXPECT_NE(reading.malformed, "") << at;
        EXPECT_FALSE(reading.frame) << at;
        EXPECT_EQ(reader.unshown(), 6u) << at;
    }
    const auto reading = reader.read(next);
    EXPECT_EQ(reading.malformed, "");
    ASSERT_TRUE(reading.frame);
    EXPECT_EQ(reading.frame->bytes, (Datagram{10, 20, 30, 40, 50, 60, 7, 8, 9}));
}

TEST(WledReader, ReadsDrgbFromTheFirstPixelOn) {
    WledReader reader(3);
    const auto reading = reader.read({2, 1, 10, 20, 30, 40, 50, 60});
    EXPECT_EQ(reading.malformed, "");
    EXPECT_EQ(reading.protocol, 2);
    EXPECT_EQ(reading.timeout, 1);
    EXPECT_EQ(reading.first, 0u);
    EXPECT_EQ(reading.count, 2u);
    EXPECT_EQ(reader.pixels(),
              (std::vector<WledPixel>{{10, 20, 30, 0}, {40, 50, 60, 0}, {0, 0, 0, 0}}));
}

TEST(WledReader, ReadsDrgbwFromTheFirstPixelOn) {
    WledReader reader(3);
    const auto reading = reader.read({3, 255, 1, 2, 3, 4, 5, 6, 7, 8});
    EXPECT_EQ(reading.malformed, "");
    EXPECT_EQ(reading.protocol, 3);
    EXPECT_EQ(reading.timeout, 255);
    EXPECT_EQ(reading.first, 0u);
    EXPECT_EQ(reading.count, 2u);
    EXPECT_EQ(reader.pixels(), (std::vector<WledPixel>{{1, 2, 3, 4}, {5, 6, 7, 8}, {0, 0, 0, 0}}));
    EXPECT_EQ(reader.read({2, 2, 9, 9, 9}).malformed, "");
    EXPECT_EQ(reader.pixels()[0], (WledPixel{9, 9, 9, 0})) << "white stays";
}

TEST(WledReader, ReadsDnrgbFromItsStartIndexOn) {
    WledReader reader(600);
    auto reading = reader.read({4, 2, 0x02, 0x03, 10, 20, 30, 40, 50, 60});
    EXPECT_EQ(reading.malformed, "");
    EXPECT_EQ(reading.protocol, 4);
    EXPECT_EQ(reading.timeout, 2);
    EXPECT_EQ(reading.first, 515u);
    EXPECT_EQ(reading.count, 2u);
    reading = reader.read({4, 2, 0x02, 0x57, 7, 8, 9});
    EXPECT_EQ(reading.malformed, "");
    EXPECT_EQ(reading.first, 599u);
    EXPECT_EQ(reading.count, 1u);
    std::vector<WledPixel> expected(600);
    expected[515] = {10, 20, 30, 0};
    expected[516] = {40, 50, 60, 0};
    expected[599] = {7, 8, 9, 0};
    EXPECT_EQ(reader.pixels(), expected);
}

TEST(WledReader, RefusesEveryOtherProtocol) {
    EXPECT_EQ(wledError({1, 2, 0, 10, 20, 30}), "byte 0: protocol 1 is WARLS, which is refused");
    for (unsigned protocol = 0; protocol < 256; ++protocol)
        if (protocol == 0 || protocol > 4)
            EXPECT_EQ(wledError(changed({0, 2, 0, 0, 1, 2, 3, 4, 5, 6}, 0, protocol)),
                      "byte 0: protocol " + std::to_string(protocol) +
                          ", none of 2 (DRGB), 3 (DRGBW) and 4 (DNRGB)");
}

TEST(WledReader, TheTimeoutIsAtLeastASecond) {
    for (unsigned timeout = 0; timeout < 256; ++timeout)
        EXPECT_EQ(wledError(changed({2, 0, 1, 2, 3}, 1, timeout)),
                  timeout == 0 ? "byte 1: time-out 0, not 1 to 255" : "");
}

TEST(WledReader, PacketsEndAfterAPixel) {
    const struct {
        std::uint8_t protocol;
        std::size_t header;
        std::size_t channels;
    } packets[] = {{2, 2, 3}, {3, 2, 4}, {4, 4, 3}};
    EXPECT_EQ(wledError({}), "byte 0: the packet ends within its header");
    for (const auto &[protocol, header, channels] : packets) {
        for (std::size_t size = 1; size <= header + 2 * channels; ++size) {
            Datagram packet{protocol, 1, 0, 0, 1, 2, 3, 4, 5, 6};
            packet.resize(size);
            const std::string at = "byte " + std::to_string(size) + ": ";
            std::string expected;
            if (size < header)
                expected = at + "the packet ends within its header";
            else if (size == header)
                expected = at + "no pixels";
            else if ((size - header) % channels != 0)
                expected =
                    at + "the packet ends within a pixel of " + std::to_string(channels) + " bytes";
            EXPECT_EQ(wledError(packet), expected) << int{protocol};
        }
    }
}

TEST(WledReader, APacketHoldsALimitedNumberOfPixels) {
    EXPECT_EQ(wledError(extended({2, 1}, 490 * 3), 1000), "");
    EXPECT_EQ(wledError(extended({2, 1}, 491 * 3), 1000),
              "byte 1472: 491 pixels, more than the 490 of DRGB");
    EXPECT_EQ(wledError(extended({3, 1}, 367 * 4), 1000), "");
    EXPECT_EQ(wledError(extended({3, 1}, 368 * 4), 1000),
              "byte 1470: 368 pixels, more than the 367 of DRGBW");
    EXPECT_EQ(wledError(extended({4, 1, 0, 0}, 489 * 3), 1000), "");
    EXPECT_EQ(wledError(extended({4, 1, 0, 0}, 490 * 3), 1000),
              "byte 1471: 490 pixels, more than the 489 of DNRGB");
}

TEST(WledReader, PixelsBeyondTheStripAreMalformed) {
    EXPECT_EQ(wledError({2, 1, 1, 2, 3, 4, 5, 6}, 1),
              "byte 5: pixel 1, but the strip's length is 1");
    EXPECT_EQ(wledError({3, 1, 1, 2, 3, 4, 5, 6, 7, 8}, 1),
              "byte 6: pixel 1, but the strip's length is 1");
    EXPECT_EQ(wledError({4, 1, 0x02, 0x57, 1, 2, 3, 4, 5, 6}, 600),
              "byte 7: pixel 600, but the strip's length is 600");
    EXPECT_EQ(wledError({4, 1, 0x02, 0x58, 1, 2, 3}, 600),
              "byte 2: start index 600, but the strip's length is 600");
}
