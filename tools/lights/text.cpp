#include "tools/lights/text.h"

#include "tools/lights/json.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace lights {

std::string quote(std::string_view text) {
    constexpr std::size_t longest = 60;
    std::size_t length = text.size();
    if (length > longest) {
        length = longest;
        while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80)
            --length;
    }
    rapidjson::StringBuffer buffer;
    Json json(buffer);
    put(json, text.substr(0, length));
    return buffer.GetString() + std::string(length < text.size() ? " and more" : "");
}

std::string format(const char *pattern, ...) {
    char text[512];
    va_list values;
    va_start(values, pattern);
    std::vsnprintf(text, sizeof text, pattern, values);
    va_end(values);
    return text;
}

std::string counted(std::size_t number, const std::string &thing) {
    return std::to_string(number) + " " + thing + (number == 1 ? "" : "s");
}

std::optional<std::uint32_t> wholeNumber(std::string_view text, std::uint32_t largest) {
    std::uint32_t number = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isWhole = read.ec == std::errc() && read.ptr == text.data() + text.size();
    return isWhole && number >= 1 && number <= largest ? std::optional(number) : std::nullopt;
}

std::string nameDevice(std::size_t index, const DeviceEntry &device) {
    return format("device %zu at %s, UDP port %d", index, quote(device.ip).c_str(), device.port());
}

bool showsColours(int fd) {
    const char *type = std::getenv("TERM");
    return isatty(fd) == 1 && !(type && std::string_view(type) == "dumb");
}

std::string swatch(const Colour &colour) {
    return format("\x1b[48;2;%d;%d;%dm    \x1b[0m", colour.red, colour.green, colour.blue);
}

std::string hexText(const Colour &colour) {
    return format("#%02x%02x%02x", colour.red, colour.green, colour.blue);
}

static char lower(char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

// The edit distance, ignoring case: letters inserted, removed or replaced, or two neighbours
// swapped.
static std::size_t distance(const std::string &a, const std::string &b) {
    // edits[i][j] is the distance between the first i letters of `a` and the first j of `b`.
    std::vector<std::vector<std::size_t>> edits(a.size() + 1,
                                                std::vector<std::size_t>(b.size() + 1));
    const auto isSame = [&](std::size_t i, std::size_t j) { return lower(a[i]) == lower(b[j]); };
    for (std::size_t i = 0; i <= a.size(); ++i)
        for (std::size_t j = 0; j <= b.size(); ++j) {
            std::size_t &least = edits[i][j];
            least = i + j;
            if (i == 0 || j == 0)
                continue;
            least = std::min({edits[i - 1][j - 1] + (isSame(i - 1, j - 1) ? 0 : 1),
                              edits[i - 1][j] + 1, edits[i][j - 1] + 1});
            if (i > 1 && j > 1 && isSame(i - 1, j - 2) && isSame(i - 2, j - 1))
                least = std::min(least, edits[i - 2][j - 2] + 1);
        }
    return edits.back().back();
}

std::optional<std::string> nearestName(const std::string &name,
                                       const std::vector<std::string> &candidates) {
    // Two edits could replace nearly all letters of a short name.
    const std::size_t most = name.size() < 6 ? 1 : 2;
    std::optional<std::string> nearest;
    std::size_t least = most + 1;
    for (const auto &candidate : candidates) {
        if (candidate.size() > name.size() + most || name.size() > candidate.size() + most)
            continue;
        const std::size_t away = distance(name, candidate);
        if (away < least) {
            least = away;
            nearest = candidate;
        }
    }
    return nearest;
}

} // namespace lights
