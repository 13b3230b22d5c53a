// Signed 32-bit arithmetic that wraps around as two's complement, so that geometry is defined for
// every centroid and every scale factor.
#pragma once

#include <cstdint>
#include <limits>

inline std::int32_t wrappingAdd(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

inline std::int32_t wrappingSubtract(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

inline std::int32_t wrappingMultiply(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b));
}

// Truncates towards zero. A value outside the 32-bit range, an infinity or NaN gives the least
// integer, like the x86-64 conversion instruction.
inline std::int32_t truncateToInt32(double value) {
    if (value > -2147483649.0 && value < 2147483648.0)
        return static_cast<std::int32_t>(value);
    return std::numeric_limits<std::int32_t>::min();
}
