#include "tools/config/screenSize.h"

#include <charconv>

namespace config {

std::optional<ScreenSize> parseScreenSize(const std::string &text, std::uint32_t largest) {
    ScreenSize size;
    const char *end = text.data() + text.size();
    const auto width = std::from_chars(text.data(), end, size.width);
    if (width.ec != std::errc() || width.ptr == end || *width.ptr != 'x')
        return std::nullopt;
    const auto height = std::from_chars(width.ptr + 1, end, size.height);
    if (height.ec != std::errc() || height.ptr != end)
        return std::nullopt;
    if (size.width < 1 || size.height < 1 || size.width > largest || size.height > largest)
        return std::nullopt;
    return size;
}

} // namespace config
