// Compares the sample positions of panels and of the screen analysis with a second, 64-bit
// implementation of the rules, for all centroids, factors and screen sizes.
#include "device/device.h"
#include "device/screenGrid.h"
#include "fuzz/require.h"
#include "fuzz/seldom.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fuzzer/FuzzedDataProvider.h>

using fuzz::require;

namespace {

std::int32_t wrap(std::int64_t value) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<std::uint64_t>(value)));
}

std::int32_t limit(std::int64_t value, std::int32_t size) {
    const std::int32_t sum = wrap(value);
    return sum < 0 ? 0 : sum >= size ? wrap(std::int64_t{size} - 1) : sum;
}

std::int32_t index(std::int32_t column, std::int32_t row, std::int32_t width) {
    return wrap(static_cast<std::int64_t>(wrap(std::int64_t{row} * width)) + column);
}

struct Side {
    std::int32_t low;
    std::int32_t high;
};

Side sideOf(std::int32_t centre, std::int32_t r, std::int32_t size) {
    Side side{limit(std::int64_t{centre} - r, size), 0};
    side.high = limit(std::int64_t{side.low} + wrap(2 * std::int64_t{r}), size);
    if (side.low == wrap(std::int64_t{size} - 1))
        side.low = wrap(std::int64_t{side.high} - wrap(2 * std::int64_t{r}));
    return side;
}

void requireSamples(const Device &device) {
    const auto width = static_cast<std::int32_t>(device.screenWidth);
    const auto height = static_cast<std::int32_t>(device.screenHeight);
    const double half = device.scaleFactor * (device.shapeType == 0 ? 150.0 : 100.0) / 3.0;
    const bool fits = half > -2147483649.0 && half < 2147483648.0;
    const std::int32_t r = fits ? static_cast<std::int32_t>(half) : INT32_MIN;
    const bool plain = width > 0 && height > 0 && std::int64_t{width} * height <= INT32_MAX;
    for (const Panel &panel : device.panels) {
        const Side columns = sideOf(panel.centroidX, r, width);
        const Side rows = sideOf(panel.centroidY, r, height);
        const std::int64_t step = std::max(r / 5, 1);
        int written = 0;
        const bool anyRow = rows.low <= rows.high;
        for (std::int64_t c = columns.low;
             anyRow && c <= columns.high && written < panelSampleCount; c += step)
            for (std::int64_t w = rows.low; w <= rows.high && written < panelSampleCount; w += step)
                require(panel.samplePixels[written++] == index(wrap(c), wrap(w), width),
                        "a sample lies on the grid");
        const std::int32_t centre =
            index(limit(panel.centroidX, width), limit(panel.centroidY, height), width);
        for (; written < panelSampleCount; ++written)
            require(panel.samplePixels[written] == centre, "the rest repeats the centre");
        // A square that was moved to end at the far edge may start outside the screen.
        if (plain && columns.low >= 0 && rows.low >= 0)
            for (const std::int32_t sample : panel.samplePixels)
                require(sample >= 0 && sample < width * height, "a sample lies on the screen");
    }
}

void requireGrid(std::uint64_t width, std::uint64_t height) {
    std::int32_t samples[screenSampleCount + 1];
    std::memset(samples, 0x55, sizeof samples);
    fillScreenGrid(width, height, samples);
    require(samples[screenSampleCount] == 0x55555555, "nothing is written behind the grid");
    if (width == 0 || height == 0 || width > INT32_MAX || height > INT32_MAX ||
        width * height > INT32_MAX)
        return;
    for (int i = 0; i < screenSampleCount; ++i)
        require(samples[i] == 0x55555555 ||
                    (samples[i] >= 0 && static_cast<std::uint64_t>(samples[i]) < width * height),
                "a point of the grid lies on the screen");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    static constexpr std::uint64_t sizes[] = {
        0, 1, 2, 5, 80, 100, 1080, 1920, 0x7fffffff, 0x80000000, 0xffffffff, ~0ull};
    const auto side = [&] {
        switch (input.ConsumeIntegralInRange(0, 2)) {
        case 0:
            return input.PickValueInArray(sizes);
        case 1:
            return std::uint64_t{input.ConsumeIntegral<std::uint16_t>()};
        default:
            return input.ConsumeIntegral<std::uint64_t>();
        }
    };
    const auto coordinate = [&] {
        return input.ConsumeBool() ? std::int32_t{input.ConsumeIntegral<std::int16_t>()}
                                   : input.ConsumeIntegral<std::int32_t>();
    };
    const std::uint64_t width = side();
    const std::uint64_t height = side();
    static constexpr double nonsense[] = {1e308, -1e308, 42949672.96, -42949672.96, HUGE_VAL, NAN};
    const int kind = input.ConsumeIntegralInRange(0, 3);
    const double factor = kind == 0  ? input.PickValueInArray(nonsense)
                          : kind < 3 ? input.ConsumeFloatingPointInRange(-4.0, 60.0)
                                     : input.ConsumeFloatingPoint<double>();
    const std::int32_t shape = input.ConsumeIntegralInRange(-1, 2);
    std::vector<Panel> panels(input.ConsumeIntegralInRange<std::size_t>(1, 3));
    for (Panel &panel : panels) {
        panel.centroidX = coordinate();
        panel.centroidY = coordinate();
    }
    Device device("127.0.0.1", 2, shape, factor, panels, static_cast<int>(panels.size()), width,
                  height, 4);
    device.calculateSamplePixels();
    requireSamples(device);
    if (fuzz::isSeldom(data, size, 8))
        requireGrid(width, height);
    return 0;
}
