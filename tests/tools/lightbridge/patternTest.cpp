#include "tools/lightbridge/pattern.h"
#include "tools/wall/flashMeter.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;
using lightbridge::Colour;
using lightbridge::Pattern;

namespace {

// A device with the panels 11, 12, ...; an output that shows it from pixel 100 on.
config::Document documentOf(int panels, int pixelsPerPanel = 1) {
    config::DeviceEntry device{"127.0.47.3", 2, 0, 1.0, {}};
    for (int i = 0; i < panels; ++i)
        device.panels.push_back({11 + i, i, 0});
    config::OutputEntry output;
    output.firstPixel = 100;
    output.pixelsPerPanel = pixelsPerPanel;
    return {1, 0, {device}, config::BridgeEntry{{output}}};
}

const Colour black{};
const Colour white{255, 255, 255};

} // namespace

TEST(LightbridgePattern, LightsOnePanel) {
    const config::Document document = documentOf(3);
    const Pattern pattern = lightbridge::identifyPanel(document, 12).value();
    EXPECT_FALSE(pattern.isMoving);
    EXPECT_EQ(pattern.colourOf(0, 0, 1s), black);
    EXPECT_EQ(pattern.colourOf(0, 1, 1s), white);
    EXPECT_EQ(pattern.colourOf(0, 2, 1s), black);
    EXPECT_FALSE(lightbridge::identifyPanel(document, 14));
}

TEST(LightbridgePattern, LightsOnePixel) {
    config::Document document = documentOf(3, 4);
    const Pattern pattern = lightbridge::identifyPixel(document, 111).value();
    const auto device = static_cast<std::size_t>(document.bridge->outputs[0].device);
    ASSERT_EQ(document.devices[device].panels.size(), 12u);
    EXPECT_EQ(document.bridge->outputs[0].pixelsPerPanel, 1);
    for (std::size_t pixel = 0; pixel < 12; ++pixel)
        EXPECT_EQ(pattern.colourOf(0, pixel, 0s), pixel == 11 ? white : black) << pixel;
    for (const std::size_t missing : {99, 112}) {
        config::Document other = documentOf(3, 4);
        EXPECT_FALSE(lightbridge::identifyPixel(other, missing)) << missing;
    }
}

TEST(LightbridgePattern, PlaysEveryColour) {
    const config::Document document = documentOf(6);
    const Pattern pattern = lightbridge::testPattern(document);
    EXPECT_TRUE(pattern.isMoving);
    EXPECT_EQ(pattern.colourOf(0, 0, 0s), black);
    EXPECT_EQ(pattern.colourOf(0, 5, 1000ms), (Colour{255, 0, 0}));
    EXPECT_EQ(pattern.colourOf(0, 5, 2500ms), (Colour{0, 255, 0}));
    EXPECT_EQ(pattern.colourOf(0, 5, 4000ms), (Colour{0, 0, 255}));
    EXPECT_EQ(pattern.colourOf(0, 5, 5500ms), white);
    EXPECT_EQ(pattern.colourOf(0, 5, 7400ms), black);
    // Half of the rainbow's time: the panels show the hues from cyan on.
    EXPECT_EQ(pattern.colourOf(0, 0, 11500ms), (Colour{0, 255, 255}));
    EXPECT_EQ(pattern.colourOf(0, 1, 11500ms), (Colour{0, 0, 255}));
    EXPECT_EQ(pattern.colourOf(0, 3, 11500ms), (Colour{255, 0, 0}));
    EXPECT_EQ(pattern.colourOf(0, 5, 11500ms), (Colour{0, 255, 0}));
    EXPECT_EQ(pattern.colourOf(0, 0, 15500ms), black);
    EXPECT_EQ(pattern.colourOf(0, 0, 16500ms), (Colour{255, 0, 0}));
}

TEST(LightbridgePattern, FlashesSlowlyIfAtAll) {
    const config::Document document = documentOf(6);
    const Pattern pattern = lightbridge::testPattern(document);
    panelwall::FlashMeter meter;
    for (auto time = 0ms; time < 40s; time += 20ms)
        meter.note(panelwall::relativeLuminance(pattern.colourOf(0, 2, time)),
                   lightbridge::Clock::time_point(1h) + time);
    EXPECT_GT(meter.most(), 0.0);
    EXPECT_LE(meter.most(), 2.0);
}
