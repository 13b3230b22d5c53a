// The memory of a loaded image.
#pragma once

#include "tests/macho/loader/imageFile.h"

#include <cstdint>
#include <cstring>
#include <string>

namespace macho {

// Owns the pages; they appear in the process's list of mappings under a name.
class Mapping {
public:
    // Copies the segments to one stretch of memory of the system's choice, writable for now and
    // not executable. Throws a LoadError when there is no memory.
    Mapping(const ImageFile &file, const std::string &name);
    ~Mapping();
    Mapping(const Mapping &) = delete;
    Mapping &operator=(const Mapping &) = delete;

    // Gives every segment its own protection, and takes all rights from what lies between. To be
    // called once all pointers are filled in.
    void protect(const ImageFile &file);

    // Of an address in the image.
    template <class T> T *at(std::uint64_t address) const {
        return reinterpret_cast<T *>(base + address);
    }
    // Numbers there, which a damaged file may have put at any address.
    template <class T> T load(std::uint64_t address) const {
        T value;
        std::memcpy(&value, base + address, sizeof value);
        return value;
    }
    template <class T> void store(std::uint64_t address, T value) const {
        std::memcpy(base + address, &value, sizeof value);
    }
    bool contains(const void *pointer) const {
        const auto *byte = static_cast<const std::uint8_t *>(pointer);
        return byte >= base && byte < base + size;
    }
    std::uint8_t *start() const { return base; }

private:
    std::uint8_t *base;
    std::size_t size;
};

} // namespace macho
