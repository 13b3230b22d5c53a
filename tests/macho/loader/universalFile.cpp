#include "tests/macho/loader/universalFile.h"
#include "tests/macho/loader/format.h"

namespace macho {

Bytes x86Part(Bytes bytes) {
    ByteReader reader(bytes, "the header of the universal file");
    const auto number = [&reader] { return __builtin_bswap32(reader.read<std::uint32_t>()); };
    if (bytes.size() < sizeof(std::uint32_t) || number() != magicUniversal)
        return bytes;
    const std::uint32_t count = number();
    for (std::uint32_t i = 0; i < count; ++i) {
        UniversalSlice slice;
        slice.cpu = number();
        slice.cpuSubtype = number();
        slice.offset = number();
        slice.size = number();
        slice.alignment = number();
        if (slice.cpu == cpuX86_64)
            return ByteReader::part(bytes, slice.offset, slice.size,
                                    "the x86-64 part of the universal file");
    }
    throw LoadError("the universal file has no x86-64 part");
}

} // namespace macho
