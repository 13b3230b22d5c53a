#include "tools/wall/arrivalMeter.h"
#include "tests/tools/panelwall/walls.h"

#include <gtest/gtest.h>

using namespace panelwall;
using std::chrono::milliseconds;
using test::start;

// Notes datagrams at these moments, in milliseconds from the start.
static ArrivalMeter meterOf(const std::vector<int> &moments) {
    ArrivalMeter meter;
    for (const int moment : moments)
        meter.note(start + milliseconds(moment));
    return meter;
}

TEST(PanelwallArrivalMeter, KnowsNothingAtFirst) {
    EXPECT_FALSE(ArrivalMeter().interval());
    EXPECT_FALSE(meterOf({0}).interval());
    EXPECT_FALSE(meterOf({0, 42}).jitter());
    EXPECT_EQ(meterOf({0, 42}).interval(), 42.0);
}

TEST(PanelwallArrivalMeter, JitterIsTheDifferenceOfNeighbours) {
    EXPECT_EQ(meterOf({0, 40, 80, 120}).jitter(), 0.0);
    EXPECT_EQ(meterOf({0, 40, 90, 130}).jitter(), 10.0);
    EXPECT_EQ(meterOf({0, 40, 90, 130}).interval(), 40.0);
    // A slow change of pace is hardly any jitter: intervals of 40, 41 and 42 ms.
    EXPECT_EQ(meterOf({0, 40, 81, 123}).jitter(), 1.0);
}

TEST(PanelwallArrivalMeter, ForgetsWhatIsLongAgo) {
    ArrivalMeter meter = meterOf({0, 500, 510, 1500});
    for (int i = 1; i <= 40; ++i)
        meter.note(start + milliseconds(1500 + i * 20));
    EXPECT_EQ(meter.interval(), 20.0);
    EXPECT_EQ(meter.jitter(), 0.0);
}

TEST(PanelwallArrivalMeter, CountsGapsInARhythm) {
    std::vector<int> moments;
    for (int i = 0; i < 10; ++i)
        moments.push_back(i * 42);
    EXPECT_EQ(meterOf(moments).gaps(), 0u);
    moments.push_back(9 * 42 + 84); // exactly twice the interval is not yet a gap
    EXPECT_EQ(meterOf(moments).gaps(), 0u);
    moments.push_back(moments.back() + 85);
    EXPECT_EQ(meterOf(moments).gaps(), 1u);
    moments.push_back(moments.back() + 42);
    EXPECT_EQ(meterOf(moments).gaps(), 1u);
}

TEST(PanelwallArrivalMeter, ShortIntervalsMakeNoGaps) {
    std::vector<int> moments;
    for (int i = 0; i < 20; ++i)
        moments.push_back(i);
    moments.push_back(19 + 20);
    EXPECT_EQ(meterOf(moments).gaps(), 0u);
}

TEST(PanelwallArrivalMeter, APauseBeginsAnew) {
    std::vector<int> moments;
    for (int i = 0; i < 20; ++i)
        moments.push_back(i * 42);
    moments.push_back(moments.back() + 3000);
    EXPECT_EQ(meterOf(moments).gaps(), 0u);
    EXPECT_FALSE(meterOf(moments).interval());
    moments.push_back(moments.back() + 99);
    EXPECT_EQ(meterOf(moments).interval(), 99.0);
}

TEST(PanelwallArrivalMeter, CountsTheLastSecond) {
    ArrivalMeter meter;
    EXPECT_EQ(meter.perSecond(start), 0u);
    for (int i = 0; i < 100; ++i)
        meter.note(start + milliseconds(i * 50));
    const auto end = start + milliseconds(5000);
    EXPECT_EQ(meter.perSecond(end), 20u);
    EXPECT_EQ(meter.perSecond(end + milliseconds(500)), 10u);
    EXPECT_EQ(meter.perSecond(end + milliseconds(1000)), 0u);
    EXPECT_EQ(meter.perSecond(end + std::chrono::hours(1)), 0u);
}
