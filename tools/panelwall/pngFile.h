// Converts canvases to PNG pictures.
#pragma once

#include "tools/panelwall/canvas.h"

#include <string>

namespace panelwall {

// Writes the canvas to `path` as 8-bit RGB. The file is written under another name beside it and
// then renamed, so that a reader finds the earlier picture or this one, never a partial one. On
// failure it returns the reason and leaves no file behind; on success it returns an empty string.
std::string writePng(const Canvas &canvas, const std::string &path);

// The same picture in memory; empty when it cannot be encoded.
std::string encodePng(const Canvas &canvas);

// Why a picture could not be written to `path` now; empty if it could.
std::string findObstacle(const std::string &path);

} // namespace panelwall
