#include "tools/panelwall/canvas.h"

#include <algorithm>
#include <cmath>

namespace panelwall {

Colour mix(Colour under, Colour over, double share) {
    const auto channel = [share](std::uint8_t below, std::uint8_t above) {
        return static_cast<std::uint8_t>(std::lround(below + (above - below) * share));
    };
    return {channel(under.red, over.red), channel(under.green, over.green),
            channel(under.blue, over.blue)};
}

Canvas::Canvas(int width, int height, Colour background)
    : columns(width), rows(height),
      pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), background) {}

// The share of the pixel at (x, y) that lies in the box, from 0 outside to 1 inside. Derived from
// the distance between the pixel's centre and the edge, which is exact enough for one pixel.
static double coverageOf(const Box &box, double radius, int x, int y) {
    const double halfWidth = (box.right - box.left) / 2;
    const double halfHeight = (box.bottom - box.top) / 2;
    if (halfWidth <= 0 || halfHeight <= 0)
        return 0.0;
    radius = std::clamp(radius, 0.0, std::min(halfWidth, halfHeight));
    const double dx = std::abs(x + 0.5 - (box.left + halfWidth)) - (halfWidth - radius);
    const double dy = std::abs(y + 0.5 - (box.top + halfHeight)) - (halfHeight - radius);
    const double outside = std::hypot(std::max(dx, 0.0), std::max(dy, 0.0));
    const double distance = outside + std::min(std::max(dx, dy), 0.0) - radius;
    return std::clamp(0.5 - distance, 0.0, 1.0);
}

template <typename Coverage> void Canvas::paint(const Box &box, Colour colour, Coverage coverage) {
    const auto limit = [](double edge, int most) {
        return static_cast<int>(std::clamp(edge, 0.0, static_cast<double>(most)));
    };
    const int right = limit(std::ceil(box.right), columns);
    const int bottom = limit(std::ceil(box.bottom), rows);
    for (int y = limit(std::floor(box.top), rows); y < bottom; ++y)
        for (int x = limit(std::floor(box.left), columns); x < right; ++x)
            pixels[index(x, y)] = mix(pixels[index(x, y)], colour, coverage(x, y));
}

void Canvas::fill(const Box &box, double radius, Colour colour) {
    paint(box, colour, [&](int x, int y) { return coverageOf(box, radius, x, y); });
}

void Canvas::stroke(const Box &box, double radius, double line, Colour colour) {
    const Box inner{box.left + line, box.top + line, box.right - line, box.bottom - line};
    paint(box, colour, [&](int x, int y) {
        return coverageOf(box, radius, x, y) - coverageOf(inner, radius - line, x, y);
    });
}

} // namespace panelwall
