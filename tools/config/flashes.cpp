#include "tools/config/flashes.h"

namespace config {

// Each frame is at least the mode's delay after the one before; the library's delays are fixed.
// Palette mode draws each panel's colour and time by itself and holds it for a second or more.
double mostFlashes(std::int32_t mode) {
    constexpr double framesPerFlash = 2.0;
    constexpr double matchDelay = 0.042; // seconds
    constexpr double meltDelay = 0.099;
    constexpr double fadeDelay = 0.149;
    switch (mode) {
    case 0:
        return 1.0 / (framesPerFlash * matchDelay);
    case 1:
        return 1.0 / (framesPerFlash * meltDelay);
    case 2:
        return 1.0 / (framesPerFlash * fadeDelay);
    default:
        return 0.0;
    }
}

} // namespace config
