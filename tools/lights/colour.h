// A colour as panels show it.
#pragma once

#include <cstdint>

namespace panelwall {

struct Colour {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;

    bool operator==(const Colour &) const = default;
};

} // namespace panelwall
