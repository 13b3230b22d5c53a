// Colours as the bytes of a receiver's pixels.
#pragma once

#include "tools/config/outputs.h"
#include "tools/lights/device.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace lightbridge {

using lights::Colour;

// The colour of a text such as "#ff8000", which must be one.
Colour parseColour(const std::string &text);

// Applies an output's gamma, white balance and brightness to a colour, and puts its channels into
// the output's order. The white of a pixel with four channels is the part that all three colours
// have in common, which they then lack.
class PixelFormat {
public:
    explicit PixelFormat(const config::OutputEntry &output);

    // Appends the colour's pixels, as many as a panel has.
    void append(Colour colour, std::vector<std::uint8_t> &bytes) const;

private:
    std::array<std::array<std::uint8_t, 256>, 3> corrected; // for red, green and blue
    std::array<std::size_t, 4> order{};                     // indices into red, green, blue, white
    std::size_t channels;
    std::size_t pixels; // of a panel
};

} // namespace lightbridge
