// What the unwinder of this system has to know of an image, so that exceptions pass through it.
#pragma once

#include "tests/macho/loader/imageFile.h"
#include "tests/macho/loader/mapping.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace macho {

// Holds the image's functions registered with LLVM's unwinder. The mapping must outlive it, and
// its binds must be done. Any thread.
class FrameSection {
public:
    // Throws a LoadError when the image's tables are not understood.
    FrameSection(const ImageFile &file, const Mapping &mapping);
    ~FrameSection();
    FrameSection(const FrameSection &) = delete;
    FrameSection &operator=(const FrameSection &) = delete;

    std::size_t functionCount() const { return functions; }

private:
    std::vector<std::uint8_t> bytes;
    std::size_t functions = 0;
};

} // namespace macho
