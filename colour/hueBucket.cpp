#include "colour/hueBucket.h"
#include "colour/bias.h"

void weightColours(const HSLColumns &__restrict columns, std::uint16_t maxCount,
                   WeightedColour (&__restrict weighted)[HSLColumns::capacity]) {
    for (int i = 0; i < HSLColumns::capacity; ++i) {
        const std::uint16_t saturation = columns.saturation[i];
        const std::uint16_t lightness = columns.lightness[i];
        const std::uint16_t count = std::min(bias(saturation, lightness), maxCount);
        weighted[i] = {count, static_cast<std::uint16_t>(saturation * count),
                       static_cast<std::uint16_t>(lightness * count), 0};
    }
}
