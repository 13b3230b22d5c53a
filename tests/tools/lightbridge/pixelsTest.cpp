#include "tools/lightbridge/pixels.h"
#include "tests/tools/lightbridge/packets.h"

#include <gtest/gtest.h>

using lightbridge::PixelFormat;

namespace {

std::vector<std::uint8_t> pixelsOf(const config::OutputEntry &output, lightbridge::Colour colour) {
    std::vector<std::uint8_t> bytes;
    PixelFormat(output).append(colour, bytes);
    return bytes;
}

} // namespace

TEST(LightbridgePixels, AreTheColoursThemselvesByDefault) {
    for (int value = 0; value < 256; ++value) {
        const auto byte = static_cast<std::uint8_t>(value);
        EXPECT_EQ(pixelsOf({}, {byte, 7, 255}), (std::vector<std::uint8_t>{byte, 7, 255}));
    }
}

TEST(LightbridgePixels, HaveTheOutputsOrderAndNumber) {
    const std::pair<const char *, const char *> orders[] = {
        {"RGB", "01 02 03"},     {"RBG", "01 03 02"},     {"GRB", "02 01 03"},
        {"GBR", "02 03 01"},     {"BRG", "03 01 02"},     {"BGR", "03 02 01"},
        {"RGBW", "00 01 02 01"}, {"RBGW", "00 02 01 01"}, {"GRBW", "01 00 02 01"},
        {"GBRW", "01 02 00 01"}, {"BRGW", "02 00 01 01"}, {"BGRW", "02 01 00 01"}};
    for (const auto &[order, expected] : orders) {
        config::OutputEntry output;
        output.colourOrder = order;
        EXPECT_EQ(pixelsOf(output, {1, 2, 3}), test::bytes(expected)) << order;
    }
    config::OutputEntry output;
    output.pixelsPerPanel = 3;
    EXPECT_EQ(pixelsOf(output, {1, 2, 3}), test::bytes("01 02 03 01 02 03 01 02 03"));
}

TEST(LightbridgePixels, AreCorrected) {
    config::OutputEntry output;
    output.brightness = 50;
    EXPECT_EQ(pixelsOf(output, {255, 100, 0}), (std::vector<std::uint8_t>{128, 50, 0}));
    output.whiteBalance = "#ff8000";
    EXPECT_EQ(pixelsOf(output, {255, 255, 255}), (std::vector<std::uint8_t>{128, 64, 0}));
    output = {};
    output.gamma = 2.0;
    EXPECT_EQ(pixelsOf(output, {255, 128, 51}), (std::vector<std::uint8_t>{255, 64, 10}));
}

// A white light next to coloured ones adds to them.
TEST(LightbridgePixels, SplitOffTheWhiteAfterCorrection) {
    config::OutputEntry output;
    output.colourOrder = "RGBW";
    output.brightness = 50;
    EXPECT_EQ(pixelsOf(output, {255, 200, 100}), (std::vector<std::uint8_t>{78, 50, 0, 50}));
    EXPECT_EQ(pixelsOf(output, {255, 255, 255}), (std::vector<std::uint8_t>{0, 0, 0, 128}));
}

TEST(LightbridgePixels, ReadsColours) {
    EXPECT_EQ(lightbridge::parseColour("#ff8001"), (lightbridge::Colour{255, 128, 1}));
    EXPECT_EQ(lightbridge::parseColour("#00aB0c"), (lightbridge::Colour{0, 0xab, 0x0c}));
}
