#include "bench/scene.h"

#include <cmath>

namespace bench {

namespace {

std::uint32_t smoothPixel(double x, double y, double seed) {
    const auto wave = [](double phase) {
        return static_cast<std::uint32_t>(127.5 + 127.5 * std::sin(phase));
    };
    const double light = 0.35 + 0.65 * y;
    const auto channel = [&](double phase) {
        return static_cast<std::uint32_t>(light * wave(seed * 0.7 + 5.0 * x + phase));
    };
    return channel(0) << 16 | channel(2.1) << 8 | channel(4.2);
}

} // namespace

std::vector<std::uint32_t> picture(const ScreenSize &size, Content content, std::uint32_t seed) {
    std::vector<std::uint32_t> pixels;
    pixels.reserve(size.bytes() / 4);
    std::uint32_t state = seed;
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            state = state * 1664525u + 1013904223u;
            pixels.push_back(content == Content::Noise
                                 ? state >> 8
                                 : smoothPixel(static_cast<double>(x) / size.width,
                                               static_cast<double>(y) / size.height, seed));
        }
    return pixels;
}

std::string configuration(std::uint32_t displayID, const ScreenSize &size, int mode, int panelCount,
                          int deviceCount, const char *ip) {
    const int columns = static_cast<int>(std::ceil(std::sqrt(panelCount * 16.0 / 9.0)));
    const int rows = (panelCount + columns - 1) / columns;
    const double side = static_cast<double>(size.width) / columns;
    std::string text = "{\"displayID\":" + std::to_string(displayID) +
                       ",\"mode\":" + std::to_string(mode) + ",\"devices\":[";
    const int perDevice = panelCount / deviceCount;
    for (int d = 0; d < deviceCount; ++d) {
        text += d > 0 ? ",{" : "{";
        text += "\"ip\":\"" + std::string(ip) + "\",\"controlVersion\":2,\"shapeType\":0," +
                "\"scaleFactor\":" + std::to_string(side / 150.0) + ",\"panels\":[";
        for (int p = 0; p < perDevice; ++p) {
            const int panel = d * perDevice + p;
            const double x = (panel % columns + 0.5) / columns * size.width;
            const double y = (panel / columns + 0.5) / rows * size.height;
            text += p > 0 ? ",{" : "{";
            text += "\"panelID\":" + std::to_string(panel + 1) +
                    ",\"centroidX\":" + std::to_string(static_cast<int>(x)) +
                    ",\"centroidY\":" + std::to_string(static_cast<int>(y)) + "}";
        }
        text += "]}";
    }
    return text + "]}";
}

} // namespace bench
