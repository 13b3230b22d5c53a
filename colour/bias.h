// How much say a colour has in the dominant one.
#pragma once

#include <algorithm>

constexpr int mostBias = 20;

// hslBias() of a saturation and a lightness, in any type of integer that holds them: the narrower
// the type, the more of them a processor works out at once.
template <class Integer> constexpr Integer bias(Integer saturation, Integer lightness) {
    const Integer light = std::clamp<Integer>(lightness / 3, 1, 10);
    const Integer vivid = lightness < 11 ? 0 : std::min<Integer>(saturation / 4, 10);
    return static_cast<Integer>(light + vivid);
}
