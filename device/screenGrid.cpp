#include "device/screenGrid.h"

#include <algorithm>

void fillScreenGrid(std::uint64_t screenWidth, std::uint64_t screenHeight,
                    std::int32_t *samplePixels) {
    const std::int64_t width = static_cast<std::int32_t>(screenWidth);
    const std::int64_t height = static_cast<std::int32_t>(screenHeight);
    const std::int64_t x0 = static_cast<std::int64_t>(static_cast<double>(width) * 0.1);
    const std::int64_t y0 = static_cast<std::int64_t>(static_cast<double>(height) * 0.1);
    const std::int64_t x1 = width - x0;
    const std::int64_t y1 = height - y0;
    const std::int64_t stepX = std::max<std::int64_t>((x1 - x0) / 80, 1);
    const std::int64_t stepY = std::max<std::int64_t>((y1 - y0) / 80, 1);

    int written = 0;
    for (std::int64_t c = x0; c < x1 && written < screenSampleCount; c += stepX)
        for (std::int64_t w = y0; w < y1 && written < screenSampleCount; w += stepY)
            samplePixels[written++] = static_cast<std::int32_t>(w * width + c);
}
