#include "device/device.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace {

constexpr int int32Min = std::numeric_limits<int>::min();
constexpr int int32Max = std::numeric_limits<int>::max();

Device makeDevice(int shapeType, double scaleFactor, unsigned long width, unsigned long height) {
    return Device("127.0.0.1", 2, shapeType, scaleFactor, {}, 0, width, height, 4);
}

struct Samples {
    std::vector<int> index;
    int width;

    int column(int i) const { return index[static_cast<std::size_t>(i)] % width; }
    int row(int i) const { return index[static_cast<std::size_t>(i)] / width; }
};

Samples sample(int shapeType, double scale, int x, int y, int width = 1920, int height = 1080) {
    Device device = makeDevice(shapeType, scale, static_cast<unsigned long>(width),
                               static_cast<unsigned long>(height));
    Samples samples{std::vector<int>(100, -7), width};
    device.sparseRectSample(x, y, scale, samples.index.data(), 100);
    return samples;
}

// A second implementation of the sampling, step by step, in integers wide enough not to wrap.
std::vector<int> plainSample(int shapeType, double scale, int x, int y, long long width,
                             long long height) {
    const long long r = static_cast<int>(scale * (shapeType == 0 ? 150.0 : 100.0) / 3.0);
    const auto limit = [](long long value, long long bound) {
        return value < 0 ? 0 : value >= bound ? bound - 1 : value;
    };
    long long x0 = limit(x - r, width), x1 = limit(x0 + 2 * r, width);
    if (x0 == width - 1)
        x0 = x1 - 2 * r;
    long long y0 = limit(y - r, height), y1 = limit(y0 + 2 * r, height);
    if (y0 == height - 1)
        y0 = y1 - 2 * r;
    const long long step = std::max(r / 5, 1ll);
    std::vector<int> out;
    for (long long c = x0; c <= x1; c += step)
        for (long long w = y0; w <= y1; w += step)
            if (out.size() < 100)
                out.push_back(static_cast<int>(w * width + c));
    out.resize(100, static_cast<int>(limit(y, height) * width + limit(x, width)));
    return out;
}

TEST(Geometry, SquareOfShapeType0KeepsItsLeftColumns) {
    const Samples s = sample(0, 1.0, 640, 360);
    for (int i = 0; i < 99; ++i) {
        EXPECT_EQ(s.column(i), 590 + i / 11 * 10) << i;
        EXPECT_EQ(s.row(i), 310 + i % 11 * 10) << i;
    }
    EXPECT_EQ(s.column(99), 680);
    EXPECT_EQ(s.row(99), 310);
}

TEST(Geometry, OtherShapeTypesAreSmaller) {
    for (const int shapeType : {1, 2, -1, int32Max}) {
        const Samples s = sample(shapeType, 1.0, 640, 360);
        for (int i = 0; i < 100; ++i) {
            EXPECT_EQ(s.column(i), 607 + i / 12 * 6) << i;
            EXPECT_EQ(s.row(i), 327 + i % 12 * 6) << i;
        }
        EXPECT_EQ(s.column(99), 607 + 8 * 6);
    }
}

TEST(Geometry, SquareAtTheTopLeftIsMovedInwards) {
    const Samples s = sample(0, 1.0, 10, 10);
    EXPECT_EQ(s.index[0], 0);
    EXPECT_EQ(s.row(10), 100);
    EXPECT_EQ(s.column(98), 80);
}

TEST(Geometry, SquareAtTheBottomRightIsCutShort) {
    const Samples s = sample(0, 1.0, 1915, 1075);
    for (int i = 0; i < 36; ++i) {
        EXPECT_EQ(s.column(i), 1865 + i / 6 * 10) << i;
        EXPECT_EQ(s.row(i), 1025 + i % 6 * 10) << i;
    }
    for (int i = 36; i < 100; ++i)
        EXPECT_EQ(s.index[static_cast<std::size_t>(i)], 1075 * 1920 + 1915) << i;
}

TEST(Geometry, SquareBeyondTheRightEdgeIsRebuilt) {
    const Samples s = sample(0, 1.0, 2000, 500);
    EXPECT_EQ(s.column(0), 1819);
    EXPECT_EQ(s.column(99), 1819 + 90);
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(s.row(i), 450 + i % 11 * 10) << i;
}

TEST(Geometry, SquareBeyondTheBottomEdgeIsRebuilt) {
    const Samples s = sample(0, 1.0, 500, 1200);
    EXPECT_EQ(s.row(0), 979);
    EXPECT_EQ(s.row(10), 1079);
}

TEST(Geometry, ScaleZeroIsTheLimitedCentre) {
    for (const int index : sample(0, 0.0, 640, 360).index)
        EXPECT_EQ(index, 360 * 1920 + 640);
    for (const int index : sample(0, 0.0, -50, 5000).index)
        EXPECT_EQ(index, 1079 * 1920);
}

TEST(Geometry, SmallPanelRepeatsItsCentre) {
    const Samples s = sample(1, 0.1, 640, 360);
    EXPECT_EQ(s.index[0], 357 * 1920 + 637);
    EXPECT_EQ(s.index[48], 363 * 1920 + 643);
    for (std::size_t i = 49; i < 100; ++i)
        EXPECT_EQ(s.index[i], 360 * 1920 + 640);
}

TEST(Geometry, NegativeScaleIsTheLimitedCentre) {
    for (const int x : {-10, 0, 640, 1919, 4000})
        for (const int index : sample(0, -1.0, x, 360).index)
            EXPECT_EQ(index, 360 * 1920 + std::clamp(x, 0, 1919));
}

TEST(Geometry, RebuiltSquareLargerThanTheScreenReachesOverItsEdge) {
    const Samples s = sample(0, 30.0, 4000, 500); // r = 1500 on 1920 columns
    EXPECT_EQ(s.index[0], 1919 - 3000);
    EXPECT_EQ(s.index[1], 300 * 1920 + 1919 - 3000);
}

TEST(Geometry, AgreesWithAPlainReference) {
    std::mt19937 random(7);
    const auto below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    for (int round = 0; round < 20000; ++round) {
        const int width = 1 + below(3000), height = 1 + below(2000);
        const int x = below(8000) - 3000, y = below(8000) - 3000;
        const int shapeType = below(3) - 1;
        const double scale = (below(4000) - 500) / 300.0;
        EXPECT_EQ(sample(shapeType, scale, x, y, width, height).index,
                  plainSample(shapeType, scale, x, y, width, height))
            << width << "x" << height << " centre " << x << "," << y << " scale " << scale;
    }
}

// There is no reference result. The call must end, write 100 entries and give the same result each
// time.
TEST(Geometry, IsDefinedForEveryNumber) {
    const double infinity = std::numeric_limits<double>::infinity();
    const int extremes[] = {int32Min, int32Min + 1, -1, 0, 1, 1919, 1920, int32Max - 1, int32Max};
    const double scales[] = {0.0,    -0.0,  1.0,    -1.0,     1e-300,    1e7,         4e7,
                             -4.3e7, 1e300, -1e300, infinity, -infinity, std::nan("")};
    const unsigned long sizes[] = {0, 1, 1920, 2147483647ul, 4294967295ul, 1ul << 40};
    for (const unsigned long size : sizes)
        for (const int x : extremes)
            for (const int y : extremes)
                for (const double scale : scales) {
                    Device device = makeDevice(0, scale, size, size);
                    int first[100], second[100];
                    std::fill_n(first, 100, 1);
                    std::fill_n(second, 100, 2);
                    device.sparseRectSample(x, y, scale, first, 100);
                    device.sparseRectSample(x, y, scale, second, 100);
                    ASSERT_TRUE(std::equal(first, first + 100, second));
                }
}

TEST(Geometry, LimitToBounds) {
    Device device = makeDevice(0, 1, 10, 10);
    EXPECT_EQ(device.limitToBounds(5, 3, 10), 8);
    EXPECT_EQ(device.limitToBounds(5, -6, 10), 0);
    EXPECT_EQ(device.limitToBounds(5, 5, 10), 9);
    EXPECT_EQ(device.limitToBounds(0, 0, 0), -1);
    EXPECT_EQ(device.limitToBounds(-1, 0, 0), 0);
    EXPECT_EQ(device.limitToBounds(int32Max, 1, 10), 0); // the sum wraps
}

TEST(Geometry, CoordinatesToPixelIndexWraps) {
    Device device = makeDevice(0, 1, 1920, 1080);
    EXPECT_EQ(device.coordinatesToPixelIndex(640, 360), 360 * 1920 + 640);
    EXPECT_EQ(device.coordinatesToPixelIndex(0, int32Min), 0);
}

TEST(Geometry, FillsEveryPanelInOrder) {
    std::vector<Panel> panels(2);
    panels[0].centroidX = 100;
    panels[0].centroidY = 200;
    panels[0].numSamplePixels = 100;
    panels[1].centroidX = 300;
    panels[1].centroidY = 400;
    Device device("::1", 1, 0, 0.0, panels, 2, 1920, 1080, 4);
    device.calculateSamplePixels();
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(device.panels[0].samplePixels[i], 200 * 1920 + 100);
        EXPECT_EQ(device.panels[1].samplePixels[i], 400 * 1920 + 300);
    }
    EXPECT_EQ(device.panels[0].numSamplePixels, 100);
    EXPECT_EQ(device.panels[1].unused, 0);
}

TEST(Geometry, ConstructorStoresEveryArgument) {
    std::vector<Panel> panels(3);
    panels[1].panelID = 77;
    const Device device("10.0.0.5", 1, 3, 2.5, panels, 3, 11, 22, 4);
    EXPECT_EQ(device.ip, "10.0.0.5");
    EXPECT_EQ(device.controlVersion, 1);
    EXPECT_EQ(device.shapeType, 3);
    EXPECT_EQ(device.numPanels, 3);
    EXPECT_EQ(device.scaleFactor, 2.5);
    ASSERT_EQ(device.panels.size(), 3u);
    EXPECT_EQ(device.panels[1].panelID, 77);
    EXPECT_EQ(device.screenWidth, 11u);
    EXPECT_EQ(device.screenHeight, 22u);
    EXPECT_EQ(device.bytesPerPixel, 4u);
}

} // namespace
