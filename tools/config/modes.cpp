#include "tools/config/modes.h"

#include <iterator>

namespace config {

namespace {

// Frames are at least `frameDelay` apart; the library's delays are fixed.
struct Mode {
    const char *name;
    double frameDelay; // seconds
};

// In palette mode each panel gets a random colour for a random time of at least a second.
constexpr Mode modes[] = {{"match", 0.042}, {"melt", 0.099}, {"fade", 0.149}, {"palette", 0.0}};

const Mode *find(std::int32_t number) {
    const bool isKnown = number >= 0 && number < static_cast<std::int32_t>(std::size(modes));
    return isKnown ? &modes[number] : nullptr;
}

} // namespace

const char *modeName(std::int32_t mode) {
    const Mode *found = find(mode);
    return found ? found->name : nullptr;
}

std::optional<std::int32_t> modeNumber(const std::string &text) {
    for (std::int32_t mode = 0; find(mode); ++mode)
        if (text == modeName(mode) || text == std::to_string(mode))
            return mode;
    return std::nullopt;
}

double maxFlashes(std::int32_t mode) {
    constexpr double framesPerFlash = 2.0;
    const Mode *found = find(mode);
    return found && found->frameDelay > 0.0 ? 1.0 / (framesPerFlash * found->frameDelay) : 0.0;
}

} // namespace config
