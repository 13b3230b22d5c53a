// Canvases as PNG pictures.
#pragma once

#include "tools/panelwall/canvas.h"

#include <string>

namespace panelwall {

// Writes the canvas to `path` as 8-bit RGB. The file is written under another name beside it and
// then renamed, so that a reader finds the earlier picture or this one, never half of one. Returns
// the reason when that fails, and leaves nothing behind; empty when it succeeded.
std::string writePng(const Canvas &canvas, const std::string &path);

// The same picture in memory; empty when it cannot be encoded.
std::string encodePng(const Canvas &canvas);

// Why no picture could be written to `path` as things stand; empty when nothing is in the way.
std::string findObstacle(const std::string &path);

} // namespace panelwall
