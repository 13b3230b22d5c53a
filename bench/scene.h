// Test data for the benchmarks: screen sizes, pictures and configuration documents.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace bench {

struct ScreenSize {
    const char *name;
    int width;
    int height;
    std::size_t bytes() const {
        return static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4;
    }
};

constexpr ScreenSize screenSizes[] = {{"1080p", 1920, 1080}, {"4K", 3840, 2160}};

enum class Content {
    Smooth, // a gradient through hues and lightnesses, as films and desktops mostly are
    Noise,  // every pixel a random colour, which a processor cannot predict
};

// The same seed gives the same picture.
std::vector<std::uint32_t> picture(const ScreenSize &size, Content content, std::uint32_t seed);

// A configuration document: `panelCount` panels spread evenly over the screen and divided among
// `deviceCount` devices at `ip`.
std::string configuration(std::uint32_t displayID, const ScreenSize &size, int mode, int panelCount,
                          int deviceCount, const char *ip = "127.0.0.1");

} // namespace bench
