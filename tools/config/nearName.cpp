#include "tools/config/nearName.h"

#include <algorithm>
#include <cctype>
#include <numeric>
#include <string_view>

namespace config {

static char lower(char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

// How many edits make one of the other: a letter inserted, removed or replaced, or two neighbours
// swapped.
static std::size_t distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    std::vector<std::size_t> above = row;
    std::vector<std::size_t> second; // the one above that
    for (std::size_t i = 1; i <= a.size(); ++i) {
        second.swap(above);
        above.swap(row);
        row.assign(b.size() + 1, i);
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const char one = lower(a[i - 1]);
            const char other = lower(b[j - 1]);
            row[j] =
                std::min({above[j - 1] + (one != other ? 1 : 0), above[j] + 1, row[j - 1] + 1});
            if (i > 1 && j > 1 && one == lower(b[j - 2]) && other == lower(a[i - 2]))
                row[j] = std::min(row[j], second[j - 2] + 1);
        }
    }
    return row[b.size()];
}

std::optional<std::string> nearestName(const std::string &name,
                                       const std::vector<std::string> &candidates) {
    // Of short names nearly all letters could be wrong.
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

} // namespace config
