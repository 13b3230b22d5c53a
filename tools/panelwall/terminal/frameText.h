// What the terminal shows: the picture in half-block characters, the device lines, a message.
#pragma once

#include "tools/panelwall/picture.h"
#include "tools/wall/wall.h"

#include <string>
#include <vector>

namespace panelwall {

struct FrameContent {
    std::string title;
    std::vector<std::string> devices; // a line or two each
    std::string message;              // may be empty; broken into lines as needed
};

// The lines of one frame, with the colours of this moment, for a terminal of this size (columns and
// rows of characters): never more lines than rows, never longer than the columns. A small terminal
// loses the picture first, then device lines, and says so.
std::vector<std::string> composeFrame(const Wall &wall, Clock::time_point now, Size screen,
                                      const FrameContent &content, Size terminal);

// A canvas as coloured text. One string per two of its rows, in 24-bit colour, each as many columns
// wide as the canvas. Every string ends with the colours set back to the terminal's own.
std::vector<std::string> halfBlockLines(const Canvas &canvas);

} // namespace panelwall
