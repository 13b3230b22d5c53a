#include "tests/macho/loader/mapping.h"

#include <algorithm>
#include <sys/mman.h>
#include <unistd.h>

namespace macho {

namespace {

constexpr std::uint64_t pageSize = 0x1000;

std::uint64_t wholePages(std::uint64_t size) {
    return (size + pageSize - 1) & ~(pageSize - 1);
}

int rightsOf(const Segment &segment) {
    const std::uint32_t protection =
        segment.readOnlyAfterFixups ? segment.protection & ~protectionWrite : segment.protection;
    return ((protection & protectionRead) != 0 ? PROT_READ : 0) |
           ((protection & protectionWrite) != 0 ? PROT_WRITE : 0) |
           ((protection & protectionExecute) != 0 ? PROT_EXEC : 0);
}

} // namespace

Mapping::Mapping(const ImageFile &file, const std::string &name) : size(wholePages(file.size())) {
    // Memory from a file of this name, so that whoever looks for the image in the process's list of
    // mappings finds it there.
    const int memory = memfd_create(name.c_str(), MFD_CLOEXEC);
    void *start = MAP_FAILED;
    if (memory >= 0 && ftruncate(memory, static_cast<off_t>(size)) == 0)
        start = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE, memory, 0);
    if (memory >= 0)
        close(memory);
    if (start == MAP_FAILED)
        throw LoadError("there is no memory for the image");
    base = static_cast<std::uint8_t *>(start);
    for (const Segment &segment : file.segments)
        std::copy(segment.content.begin(), segment.content.end(), base + segment.address);
}

Mapping::~Mapping() {
    munmap(base, size);
}

void Mapping::protect(const ImageFile &file) {
    bool done = mprotect(base, size, PROT_NONE) == 0;
    for (const Segment &segment : file.segments)
        if (segment.size > 0)
            done &=
                mprotect(base + segment.address, wholePages(segment.size), rightsOf(segment)) == 0;
    if (!done)
        throw LoadError("the image's memory cannot be protected");
}

} // namespace macho
