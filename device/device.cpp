#include "device/device.h"
#include "device/wrapping.h"

#include <algorithm>
#include <utility>

Device::Device(std::string ip_, int controlVersion_, int shapeType_, double scaleFactor_,
               std::vector<Panel> panels_, int numPanels_, unsigned long screenWidth_,
               unsigned long screenHeight_, unsigned long bytesPerPixel_)
    : ip(std::move(ip_)), controlVersion(controlVersion_), shapeType(shapeType_),
      numPanels(numPanels_), scaleFactor(scaleFactor_), panels(std::move(panels_)),
      screenWidth(screenWidth_), screenHeight(screenHeight_), bytesPerPixel(bytesPerPixel_) {}

void Device::calculateSamplePixels() {
    for (Panel &panel : panels)
        sparseRectSample(panel.centroidX, panel.centroidY, scaleFactor, panel.samplePixels,
                         panelSampleCount);
}

namespace {

struct Span {
    std::int32_t first;
    std::int32_t last; // inclusive
};

// The columns (or rows) of a square of half-size `r` around `centre`. A square that extends beyond
// the low edge is moved inwards and keeps its size. At the high edge it is cut off, unless even its
// low end reaches that edge: then it is moved so that it ends there.
Span squareSpan(Device &device, int centre, int r, int limit) {
    const std::int32_t side = wrappingMultiply(2, r);
    Span span;
    span.first = device.limitToBounds(centre, wrappingSubtract(0, r), limit);
    span.last = device.limitToBounds(span.first, side, limit);
    if (span.first == wrappingSubtract(limit, 1))
        span.first = wrappingSubtract(span.last, side);
    return span;
}

} // namespace

int Device::sparseRectSample(int x, int y, double scale, int *out, int maxSamples) {
    const std::int32_t width = static_cast<std::int32_t>(screenWidth);
    const std::int32_t height = static_cast<std::int32_t>(screenHeight);
    const double base = shapeType == 0 ? 150.0 : 100.0;
    const std::int32_t r = truncateToInt32(scale * base / 3.0);
    const std::int32_t step = std::max(r / 5, 1);
    const Span columns = squareSpan(*this, x, r, width);
    const Span rows = squareSpan(*this, y, r, height);

    // 64-bit counters, so that a step beyond the 32-bit range ends the loop. A wrapped square can
    // have billions of columns; if it has no row, the loop over them is skipped.
    int written = 0;
    const std::int64_t lastColumn =
        rows.first <= rows.last ? columns.last : std::numeric_limits<std::int64_t>::min();
    for (std::int64_t c = columns.first; c <= lastColumn && written < maxSamples; c += step)
        for (std::int64_t w = rows.first; w <= rows.last && written < maxSamples; w += step)
            out[written++] =
                coordinatesToPixelIndex(static_cast<std::int32_t>(c), static_cast<std::int32_t>(w));

    const std::int32_t centre =
        coordinatesToPixelIndex(limitToBounds(x, 0, width), limitToBounds(y, 0, height));
    std::fill(out + written, out + std::max(written, maxSamples), centre);
    return written;
}

int Device::coordinatesToPixelIndex(int x, int y) {
    return wrappingAdd(wrappingMultiply(y, static_cast<std::int32_t>(screenWidth)), x);
}

int Device::limitToBounds(int value, int delta, int limit) {
    const std::int32_t sum = wrappingAdd(value, delta);
    if (sum < 0)
        return 0;
    return sum >= limit ? wrappingSubtract(limit, 1) : sum;
}
