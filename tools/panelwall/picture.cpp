#include "tools/panelwall/picture.h"

#include <algorithm>
#include <cmath>

namespace panelwall {

static constexpr Colour background{19, 21, 26};
static constexpr Colour outline{62, 68, 80};
static constexpr Colour hollow{84, 91, 105};
static constexpr Colour white{255, 255, 255};

static constexpr double largestSide = 1 << 20;

template <typename Use> static void forEachPanel(const Wall &wall, Use use) {
    for (const WallDevice &device : wall.devices())
        for (const WallPanel &panel : device.panels)
            use(panel);
}

Size screenSize(const Wall &wall) {
    double right = 0.0;
    double bottom = 0.0;
    forEachPanel(wall, [&](const WallPanel &panel) {
        right = std::max(right, panel.centreX + std::max(panel.halfSide, 1.0));
        bottom = std::max(bottom, panel.centreY + std::max(panel.halfSide, 1.0));
    });
    if (right < 1.0 || bottom < 1.0)
        return {1920, 1080};
    return {static_cast<int>(std::min(right, largestSide)),
            static_cast<int>(std::min(bottom, largestSide))};
}

Size fitInto(Size screen, Size room) {
    const double scale = std::min(static_cast<double>(room.width) / screen.width,
                                  static_cast<double>(room.height) / screen.height);
    const auto scaled = [scale](int side) {
        return std::max(static_cast<int>(std::lround(side * scale)), 1);
    };
    return {scaled(screen.width), scaled(screen.height)};
}

// A panel's square on the canvas, in whole pixels and at least one pixel large. The side is rounded
// before the position, so that equal panels look equal.
static Box place(const WallPanel &panel, Size screen, const Canvas &canvas) {
    const auto edges = [&panel](double centre, double scale) {
        const double side = std::max(1.0, std::round(2 * panel.halfSide * scale));
        const double low = std::floor(centre * scale - std::floor(side / 2));
        return std::pair(low, low + side);
    };
    const auto [left, right] =
        edges(panel.centreX, static_cast<double>(canvas.width()) / screen.width);
    const auto [top, bottom] =
        edges(panel.centreY, static_cast<double>(canvas.height()) / screen.height);
    return {left, top, right, bottom};
}

Canvas drawFine(const Wall &wall, Clock::time_point now, Size screen, Size size) {
    Canvas canvas(size.width, size.height, background);
    const double line = std::max(1.0, std::round(std::min(size.width, size.height) / 540.0));
    canvas.stroke({0.0, 0.0, static_cast<double>(size.width), static_cast<double>(size.height)},
                  0.0, line, outline);
    forEachPanel(wall, [&](const WallPanel &panel) {
        const Box box = place(panel, screen, canvas);
        const double side = std::min(box.right - box.left, box.bottom - box.top);
        const double radius = side * 0.12;
        const double border = std::min(line, std::floor(side / 3));
        const auto colour = panel.shownAt(now);
        if (!colour) {
            canvas.stroke(box, radius, std::max(border, 1.0), hollow);
            return;
        }
        canvas.fill(box, radius, *colour);
        canvas.stroke(box, radius, border, mix(*colour, white, 0.25));
    });
    return canvas;
}

Canvas drawCoarse(const Wall &wall, Clock::time_point now, Size screen, Size size) {
    Canvas canvas(size.width, size.height, background);
    forEachPanel(wall, [&](const WallPanel &panel) {
        const Box box = place(panel, screen, canvas);
        if (const auto colour = panel.shownAt(now))
            canvas.fill(box, 0.0, *colour);
        else
            canvas.stroke(box, 0.0, 1.0, hollow);
    });
    return canvas;
}

} // namespace panelwall
