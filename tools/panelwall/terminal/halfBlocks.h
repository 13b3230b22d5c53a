// Canvases as coloured text: two canvas rows in each line of characters.
#pragma once

#include "tools/panelwall/canvas.h"

#include <string>
#include <vector>

namespace panelwall {

// One string per two rows, in 24-bit colour, each as many columns wide as the canvas. Every string
// ends with the colours set back to the terminal's own.
std::vector<std::string> halfBlockLines(const Canvas &canvas);

} // namespace panelwall
