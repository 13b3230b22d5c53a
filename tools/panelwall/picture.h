// The wall as a picture: the screen's outline with every panel at its place.
//
// A panel is drawn as the square of screen that determines its colour, with side
// 2 x WallPanel::halfSide, around its centre. Panels are drawn in configuration order, so later
// ones lie on top. A panel has the colour that it shows at the given time; one that was never sent
// a colour is hollow.
#pragma once

#include "tools/panelwall/canvas.h"
#include "tools/wall/wall.h"

namespace panelwall {

struct Size {
    int width = 0;
    int height = 0;
};

// The smallest screen, with its origin at the top left, that contains every panel's whole square;
// 1920 x 1080 without panels.
Size screenSize(const Wall &wall);

// The largest size with the screen's aspect ratio that fits into `room`, at least 1 x 1.
Size fitInto(Size screen, Size room);

// For a picture file: fine lines and round corners.
Canvas drawFine(const Wall &wall, Clock::time_point now, Size screen, Size canvas);

// For a terminal's few large pixels: plain squares in whole pixels.
Canvas drawCoarse(const Wall &wall, Clock::time_point now, Size screen, Size canvas);

} // namespace panelwall
