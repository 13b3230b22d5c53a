// How to leave the functions of an image: the compact table that the linker makes of it.
#pragma once

#include "tests/macho/loader/imageFile.h"
#include "tests/macho/loader/mapping.h"

#include <cstdint>
#include <vector>

namespace macho {

// One function. Addresses are in the image; 0 stands for none.
struct UnwindEntry {
    std::uint64_t start;
    std::uint64_t end;
    std::uint32_t encoding;           // 0: the function can be left by nothing but its return
    std::uint64_t personalityPointer; // where the address of the personality function is kept
    std::uint64_t languageData;
};

// The table of the mapped image, ascending; empty when it has none. Throws LoadError.
std::vector<UnwindEntry> unwindEntriesOf(const ImageFile &file, const Mapping &mapping);

} // namespace macho
