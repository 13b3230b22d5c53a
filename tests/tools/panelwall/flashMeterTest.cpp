#include "tools/wall/flashMeter.h"
#include "tests/tools/panelwall/walls.h"

#include <gtest/gtest.h>

using namespace panelwall;
using std::chrono::milliseconds;
using test::start;

// Alternates between two brightnesses for two seconds, with a change every `every` milliseconds.
static FlashMeter alternate(double one, double other, int every) {
    FlashMeter meter;
    for (int i = 0; i * every < 2000; ++i)
        meter.note(i % 2 == 0 ? one : other, start + milliseconds(i * every));
    return meter;
}

TEST(PanelwallFlashMeter, LuminanceIsLinearLightWeightedAsTheEyeDoes) {
    EXPECT_EQ(relativeLuminance({0, 0, 0}), 0.0);
    EXPECT_NEAR(relativeLuminance({255, 255, 255}), 1.0, 1e-9);
    EXPECT_NEAR(relativeLuminance({255, 0, 0}), 0.2126, 1e-9);
    EXPECT_NEAR(relativeLuminance({0, 0, 255}), 0.0722, 1e-9);
    EXPECT_NEAR(relativeLuminance({188, 188, 188}), 0.503, 0.001);
}

TEST(PanelwallFlashMeter, AFlashIsAChangeAndItsOpposite) {
    EXPECT_EQ(alternate(0.0, 1.0, 250).most(), 2.0);
    EXPECT_EQ(alternate(0.0, 1.0, 100).most(), 5.0);
    EXPECT_EQ(alternate(0.0, 1.0, 42).most(), 12.0);
}

TEST(PanelwallFlashMeter, MoreThanThreeAreAnExcess) {
    EXPECT_FALSE(alternate(0.0, 1.0, 167).lastExcess()); // six changes a second
    const FlashMeter meter = alternate(0.0, 1.0, 149);
    EXPECT_EQ(meter.most(), 3.5);
    EXPECT_EQ(meter.lastExcess(), start + milliseconds(13 * 149));
}

TEST(PanelwallFlashMeter, SmallChangesAndBrightOnesAreNone) {
    EXPECT_EQ(alternate(0.0, 0.09, 50).most(), 0.0);
    EXPECT_EQ(alternate(0.3, 0.4, 50).most(), 10.0);
    EXPECT_EQ(alternate(0.8, 1.0, 50).most(), 0.0);
    EXPECT_EQ(alternate(0.79, 1.0, 50).most(), 10.0);
}

TEST(PanelwallFlashMeter, StepsInOneDirectionAreOneChange) {
    FlashMeter meter;
    for (int i = 0; i < 20; ++i)
        meter.note(0.05 * i, start + milliseconds(10 * i));
    for (int i = 20; i >= 0; --i)
        meter.note(0.05 * i, start + milliseconds(600 - 10 * i));
    EXPECT_EQ(meter.most(), 1.0);
}

// A ripple on the way is no change of direction; what counts is the distance between turning
// points.
TEST(PanelwallFlashMeter, RipplesDoNotCount) {
    FlashMeter meter;
    int at = 0;
    for (const double luminance : {0.5, 0.45, 0.54, 0.46, 0.55, 0.47})
        meter.note(luminance, start + milliseconds(50 * at++));
    EXPECT_EQ(meter.most(), 0.5); // 0.45 to 0.55
    meter.note(0.44, start + milliseconds(50 * at++));
    EXPECT_EQ(meter.most(), 1.0); // and from there to 0.44
}

TEST(PanelwallFlashMeter, ASecondLaterNothingIsLeft) {
    FlashMeter meter;
    meter.note(0.0, start);
    meter.note(1.0, start);
    meter.note(0.0, start + milliseconds(500));
    EXPECT_EQ(meter.perSecond(start + milliseconds(999)), 1.0);
    EXPECT_EQ(meter.perSecond(start + milliseconds(1000)), 0.5);
    EXPECT_EQ(meter.perSecond(start + milliseconds(1500)), 0.0);
    EXPECT_EQ(meter.most(), 1.0);
}

TEST(PanelwallFlashMeter, AFloodTakesNoMoreRoom) {
    FlashMeter meter;
    for (int i = 0; i < 100'000; ++i)
        meter.note(i % 2, start + std::chrono::microseconds(i));
    EXPECT_EQ(meter.most(), 500.0);
}
