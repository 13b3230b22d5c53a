#include "tools/lightbridge/pixels.h"

#include <algorithm>
#include <cmath>
#include <string_view>

namespace lightbridge {

Colour parseColour(const std::string &text) {
    const long long number = std::stoll(text.substr(1), nullptr, 16);
    return {static_cast<std::uint8_t>(number >> 16), static_cast<std::uint8_t>(number >> 8),
            static_cast<std::uint8_t>(number)};
}

PixelFormat::PixelFormat(const config::OutputEntry &output)
    : channels(output.channels()), pixels(static_cast<std::size_t>(output.pixelsPerPanel)) {
    const Colour white = parseColour(output.whiteBalance);
    const std::array<std::uint8_t, 3> most = {white.red, white.green, white.blue};
    for (std::size_t i = 0; i < corrected.size(); ++i)
        for (std::size_t value = 0; value < 256; ++value)
            corrected[i][value] = static_cast<std::uint8_t>(
                std::lround(std::pow(static_cast<double>(value) / 255.0, output.gamma) * most[i] *
                            output.brightness / 100.0));
    for (std::size_t i = 0; i < channels; ++i)
        order[i] = std::string_view("RGBW").find(output.colourOrder[i]);
}

void PixelFormat::append(Colour colour, std::vector<std::uint8_t> &bytes) const {
    std::array<std::uint8_t, 4> values = {corrected[0][colour.red], corrected[1][colour.green],
                                          corrected[2][colour.blue], 0};
    if (channels == 4) {
        values[3] = std::min({values[0], values[1], values[2]});
        for (std::size_t i = 0; i < 3; ++i)
            values[i] = static_cast<std::uint8_t>(values[i] - values[3]);
    }
    for (std::size_t pixel = 0; pixel < pixels; ++pixel)
        for (std::size_t i = 0; i < channels; ++i)
            bytes.push_back(values[order[i]]);
}

} // namespace lightbridge
