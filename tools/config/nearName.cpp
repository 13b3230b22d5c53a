#include "tools/config/nearName.h"

#include <algorithm>
#include <cctype>

namespace config {

static char lower(char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

// How many letters have to be put in, left out or replaced to make one of the other.
static std::size_t distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j)
        row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t replaced = diagonal + (lower(a[i - 1]) != lower(b[j - 1]) ? 1 : 0);
            diagonal = row[j];
            row[j] = std::min({replaced, row[j] + 1, row[j - 1] + 1});
        }
    }
    return row[b.size()];
}

std::optional<std::string> nearestName(std::string_view name,
                                       const std::vector<std::string> &candidates) {
    // Of short names nearly all letters could be wrong.
    const std::size_t most = name.size() < 6 ? 1 : 2;
    std::optional<std::string> nearest;
    std::size_t least = most + 1;
    for (const auto &candidate : candidates) {
        if (candidate.size() > name.size() + most)
            continue;
        const std::size_t away = distance(name, candidate);
        if (away < least) {
            least = away;
            nearest = candidate;
        }
    }
    return nearest;
}

} // namespace config
