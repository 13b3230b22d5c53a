// The pixels of a PNG file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace test {

struct Picture {
    int width = 0; // 0: the file cannot be read
    int height = 0;
    std::vector<std::uint8_t> bytes; // red, green, blue

    // 0xRRGGBB
    std::uint32_t at(int x, int y) const {
        const std::uint8_t *pixel = &bytes.at(static_cast<std::size_t>(y * width + x) * 3);
        return static_cast<std::uint32_t>(pixel[0] << 16 | pixel[1] << 8 | pixel[2]);
    }
};

Picture readPng(const std::string &path);

} // namespace test
