#include "platform/objects/displayIds.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <set>

namespace platform {

namespace {

constexpr std::uint32_t largestId = 0x7fffffff;

// FNV-1a.
std::uint32_t hashOf(const std::string &name) {
    std::uint32_t hash = 2166136261u;
    for (const char letter : name)
        hash = (hash ^ static_cast<unsigned char>(letter)) * 16777619u;
    return hash & largestId;
}

} // namespace

std::vector<std::uint32_t> displayIdsOf(const std::vector<std::string> &names) {
    std::vector<std::size_t> order(names.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return names[a] < names[b]; });

    std::vector<std::uint32_t> ids(names.size());
    std::set<std::uint32_t> taken;
    for (const std::size_t index : order) {
        std::uint32_t id = std::max(1u, hashOf(names[index]));
        while (!taken.insert(id).second)
            id = id == largestId ? 1 : id + 1;
        ids[index] = id;
    }
    return ids;
}

} // namespace platform
