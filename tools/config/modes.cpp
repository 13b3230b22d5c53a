#include "tools/config/modes.h"

#include <iterator>

namespace config {

static const char *const modeNames[] = {"match", "melt", "fade", "palette"};

const char *modeName(std::int32_t mode) {
    const bool known = mode >= 0 && mode < static_cast<std::int32_t>(std::size(modeNames));
    return known ? modeNames[mode] : nullptr;
}

std::optional<std::int32_t> modeNumber(const std::string &text) {
    for (std::int32_t mode = 0; modeName(mode); ++mode)
        if (text == modeName(mode) || text == std::to_string(mode))
            return mode;
    return std::nullopt;
}

} // namespace config
