// A raster of colours, and the two shapes used to draw the wall.
#pragma once

#include "tools/lights/device.h"

#include <cstddef>
#include <vector>

namespace panelwall {

using lights::Colour;

// Edges in canvas pixels, right and bottom exclusive. May reach beyond the canvas.
struct Box {
    double left = 0.0;
    double top = 0.0;
    double right = 0.0;
    double bottom = 0.0;
};

class Canvas {
public:
    Canvas(int width, int height, Colour background);

    int width() const { return columns; }
    int height() const { return rows; }
    Colour at(int x, int y) const { return pixels[index(x, y)]; }
    void set(int x, int y, Colour colour) { pixels[index(x, y)] = colour; }

    // Three bytes per pixel, red first; rows are packed.
    const std::uint8_t *row(int y) const { return &pixels[index(0, y)].red; }

    // A box with rounded corners, filled, or as a line inside its edges. Edges are antialiased.
    void fill(const Box &box, double radius, Colour colour);
    void stroke(const Box &box, double radius, double line, Colour colour);

private:
    std::size_t index(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(columns) +
               static_cast<std::size_t>(x);
    }
    template <typename Coverage> void paint(const Box &box, Colour colour, Coverage coverage);

    int columns;
    int rows;
    std::vector<Colour> pixels;
};

static_assert(sizeof(Colour) == 3);

// `share` of `over` (0 to 1), the rest of `under`.
Colour mix(Colour under, Colour over, double share);

} // namespace panelwall
