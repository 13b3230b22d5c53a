#include "tools/panelwall/terminal/halfBlocks.h"

#include <optional>

namespace panelwall {

static const char upperHalf[] = "\u2580";

static std::string colourCode(int ground, Colour colour) {
    return "\x1b[" + std::to_string(ground) + ";2;" + std::to_string(colour.red) + ";" +
           std::to_string(colour.green) + ";" + std::to_string(colour.blue) + "m";
}

std::vector<std::string> halfBlockLines(const Canvas &canvas) {
    std::vector<std::string> lines;
    for (int y = 0; y < canvas.height(); y += 2) {
        std::string line;
        std::optional<Colour> upper;
        std::optional<Colour> lower;
        for (int x = 0; x < canvas.width(); ++x) {
            if (upper != canvas.at(x, y)) {
                upper = canvas.at(x, y);
                line += colourCode(38, *upper);
            }
            if (y + 1 < canvas.height() && lower != canvas.at(x, y + 1)) {
                lower = canvas.at(x, y + 1);
                line += colourCode(48, *lower);
            }
            line += upperHalf;
        }
        lines.push_back(line + "\x1b[0m");
    }
    return lines;
}

} // namespace panelwall
