// Colours for readers of a terminal.
#pragma once

#include <string>

namespace mirrorctl {

struct Colour {
    unsigned red = 0; // 0 to 255
    unsigned green = 0;
    unsigned blue = 0;

    bool operator==(const Colour &) const = default;
};

constexpr bool isBlack(const Colour &colour) {
    return colour == Colour{};
}

bool isTerminal(int fd);

// Whether colours shall be shown there: a terminal, and not one that calls itself dumb.
bool showsColours(int fd);

// Four blanks on the colour, in 24-bit colour; the terminal's own colours are set back after it.
std::string swatch(const Colour &colour);

// "#ff8000"
std::string hexText(const Colour &colour);

} // namespace mirrorctl
