// What the load commands of a Mach-O dylib say. Everything is checked here once: whoever uses an
// ImageFile need not ask again whether a segment, section or table lies where it may.
#pragma once

#include "tests/macho/loader/byteReader.h"
#include "tests/macho/loader/format.h"

#include <cstdint>
#include <string>
#include <vector>

namespace macho {

struct Section {
    std::string name;
    std::uint64_t address; // as in the file, from 0 on
    std::uint64_t size;
    std::uint64_t alignment;
    std::uint8_t type;
};

struct Segment {
    std::string name;
    std::uint64_t address; // as in the file, from 0 on
    std::uint64_t size;
    Bytes content; // the rest of the segment is zeros
    std::uint32_t protection;
    bool readOnlyAfterFixups;
    std::vector<Section> sections;
};

struct ImageFile {
    std::string installName;
    std::vector<Segment> segments;      // ascending, without overlaps, the first one at 0
    std::vector<std::string> libraries; // in the order of their ordinals, the first one is 1
    Bytes rebaseOpcodes;
    Bytes bindOpcodes;
    Bytes weakBindOpcodes;
    Bytes lazyBindOpcodes;
    Bytes exportTrie;

    std::uint64_t size() const { return segments.back().address + segments.back().size; }
    // Null when there is none.
    const Section *section(const std::string &segment, const std::string &name) const;
    std::vector<Section> sectionsOfType(SectionType type) const;
};

// Reads the x86-64 dylib in `bytes`, which must outlive the result; of a universal file, that of
// its parts. Throws a LoadError that names what is wrong.
ImageFile readImageFile(Bytes bytes);

} // namespace macho
