// Selects a few inputs for slow checks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>

namespace fuzz {

// True for one input in `often`, always the same ones. The fuzzer cannot aim for them: inputs
// derived from a selected one are not selected more often.
inline bool isSeldom(const std::uint8_t *data, std::size_t size, std::size_t often) {
    const std::string_view bytes(reinterpret_cast<const char *>(data), size);
    return std::hash<std::string_view>()(bytes) % often == 0;
}

} // namespace fuzz
