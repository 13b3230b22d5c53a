// The weight of a colour in the calculation of the dominant colour.
#pragma once

#include <algorithm>

constexpr int maxBias = 20;

// hslBias() for a saturation and a lightness, in any integer type that holds them: the narrower the
// type, the more values a vector instruction processes at once.
template <class Integer> constexpr Integer bias(Integer saturation, Integer lightness) {
    const Integer light = std::clamp<Integer>(lightness / 3, 1, 10);
    const Integer vivid = lightness < 11 ? 0 : std::min<Integer>(saturation / 4, 10);
    return static_cast<Integer>(light + vivid);
}
