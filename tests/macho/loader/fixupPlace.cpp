#include "tests/macho/loader/fixupPlace.h"

namespace macho {

void FixupPlace::moveTo(std::uint64_t segmentNumber, std::uint64_t newOffset) {
    if (segmentNumber >= file.segments.size())
        throw LoadError(table + " names segment " + std::to_string(segmentNumber) +
                        ", which does not exist");
    segment = &file.segments[segmentNumber];
    offset = newOffset;
}

std::uint64_t FixupPlace::pointer() {
    if (segment == nullptr)
        throw LoadError(table + " begins without a place");
    if (segment->size < sizeof(void *) || offset > segment->size - sizeof(void *))
        throw LoadError(table + " reaches past the end of segment " + segment->name);
    if ((segment->protection & protectionWrite) == 0)
        throw LoadError(table + " changes segment " + segment->name + ", which is not writable");
    if (++pointers > file.size())
        throw LoadError(table + " does not end");
    return segment->address + offset;
}

} // namespace macho
