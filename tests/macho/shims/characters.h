// Kinds of characters, in macOS's bits.
#pragma once

#include <cstdint>

namespace macho {

// Apple's _ctype.h.
constexpr std::uint32_t darwinAlpha = 0x100;
constexpr std::uint32_t darwinControl = 0x200;
constexpr std::uint32_t darwinDigit = 0x400;
constexpr std::uint32_t darwinGraph = 0x800;
constexpr std::uint32_t darwinLower = 0x1000;
constexpr std::uint32_t darwinPunctuation = 0x2000;
constexpr std::uint32_t darwinSpace = 0x4000;
constexpr std::uint32_t darwinUpper = 0x8000;
constexpr std::uint32_t darwinHexDigit = 0x10000;
constexpr std::uint32_t darwinBlank = 0x20000;
constexpr std::uint32_t darwinPrint = 0x40000;

// The kinds of the characters 0 to 255 in the C locale.
const std::uint32_t *darwinCharacters();

} // namespace macho
