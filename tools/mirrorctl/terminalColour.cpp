#include "tools/mirrorctl/terminalColour.h"

#include "tools/lights/text.h"

#include <cstdlib>
#include <string_view>
#include <unistd.h>

namespace mirrorctl {

bool showsColours(int fd) {
    const char *type = std::getenv("TERM");
    return isatty(fd) == 1 && !(type && std::string_view(type) == "dumb");
}

std::string swatch(const Colour &colour) {
    return "\x1b[48;2;" + std::to_string(colour.red) + ";" + std::to_string(colour.green) + ";" +
           std::to_string(colour.blue) + "m    \x1b[0m";
}

std::string hexText(const Colour &colour) {
    return lights::format("#%02x%02x%02x", colour.red, colour.green, colour.blue);
}

} // namespace mirrorctl
