// The pointers of an image that have to be filled in: its own, which move with it, and those to
// other libraries.
#pragma once

#include "tests/macho/loader/imageFile.h"

#include <cstdint>
#include <string>
#include <vector>

namespace macho {

struct Bind {
    std::uint64_t address; // in the image, of the pointer
    std::string symbol;
    std::vector<std::string> libraries; // install names, the first that has it provides it; empty
                                        // for the image itself
    std::int64_t addend;
    bool mayBeMissing; // the pointer is then null
};

// The addresses, in the image, of the pointers that move with it. Throws LoadError.
std::vector<std::uint64_t> rebasesOf(const ImageFile &file);

// All binds, the lazy ones too: nothing is left for the first call. Throws LoadError.
std::vector<Bind> bindsOf(const ImageFile &file);

} // namespace macho
