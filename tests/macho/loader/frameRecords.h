// The DWARF records that an image brings for the functions whose frames the compact table cannot
// describe.
#pragma once

#include "tests/macho/loader/imageFile.h"
#include "tests/macho/loader/mapping.h"

#include <cstdint>
#include <vector>

namespace macho {

struct FrameRecord {
    std::uint64_t start; // of the function, in the image
    std::uint64_t size;
    std::uint64_t personalityPointer; // as in UnwindEntry
    std::uint64_t languageData;
    std::vector<std::uint8_t> rules; // those of all functions, then this one's
};

// The record at `offset` of the mapped image's __eh_frame. Throws LoadError.
FrameRecord readFrameRecord(const ImageFile &file, const Mapping &mapping, std::uint32_t offset);

} // namespace macho
