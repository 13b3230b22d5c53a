#include "colour/frame.h"

#include <cmath>

RGB rootMeanSquare(const Frame &frame, const std::int32_t *indices, int count) {
    if (count < 1)
        return {};
    std::uint32_t red = 0;
    std::uint32_t green = 0;
    std::uint32_t blue = 0;
    for (int i = 0; i < count; ++i) {
        const std::uint32_t word = frame.word(indices[i]);
        const std::uint32_t r = word >> 16 & 0xff;
        const std::uint32_t g = word >> 8 & 0xff;
        const std::uint32_t b = word & 0xff;
        red += r * r;
        green += g * g;
        blue += b * b;
    }
    const std::uint32_t divisor = static_cast<std::uint32_t>(count);
    return {static_cast<std::uint8_t>(std::sqrt(static_cast<double>(red / divisor))),
            static_cast<std::uint8_t>(std::sqrt(static_cast<double>(green / divisor))),
            static_cast<std::uint8_t>(std::sqrt(static_cast<double>(blue / divisor)))};
}
