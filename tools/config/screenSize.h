// A screen's size, as people write it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace config {

struct ScreenSize {
    std::uint32_t width = 0; // pixels
    std::uint32_t height = 0;
};

// Two numbers from 1 to `largest` with an x between them, such as 1920x1080; nothing when it is not
// that.
std::optional<ScreenSize> parseScreenSize(const std::string &text, std::uint32_t largest);

} // namespace config
