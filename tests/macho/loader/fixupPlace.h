// Where in an image an opcode machine is at work.
#pragma once

#include "tests/macho/loader/imageFile.h"

#include <cstdint>
#include <string>

namespace macho {

class FixupPlace {
public:
    // `table` is what messages call the opcodes. `file` must outlive the place.
    FixupPlace(const ImageFile &file, std::string table) : file(file), table(std::move(table)) {}

    void moveTo(std::uint64_t segmentNumber, std::uint64_t newOffset);
    // As in the file format, numbers wrap: a move back is a very large move ahead.
    void advance(std::uint64_t by) { offset += by; }

    // The address of the pointer here. Throws a LoadError when no writable one is here, or when
    // there were more than the image has room for.
    std::uint64_t pointer();

private:
    const ImageFile &file;
    std::string table;
    const Segment *segment = nullptr;
    std::uint64_t offset = 0;
    std::uint64_t pointers = 0;
};

} // namespace macho
