// A cursor over bytes from a file that nobody has vouched for: every read is checked, and one that
// does not fit throws a LoadError that names what was being read.
#pragma once

#include "tests/macho/loader/loadError.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

namespace macho {

using Bytes = std::span<const std::uint8_t>;

class ByteReader {
public:
    // `name` is what messages call these bytes. The bytes must outlive the reader.
    ByteReader(Bytes bytes, std::string name) : all(bytes), name(std::move(name)) {}

    bool atEnd() const { return at == all.size(); }
    std::size_t position() const { return at; }
    void moveTo(std::size_t position);

    // A plain structure or number of little-endian layout.
    template <class T> T read() {
        const Bytes bytes = take(sizeof(T));
        T value;
        std::memcpy(&value, bytes.data(), sizeof value);
        return value;
    }
    Bytes take(std::size_t count);
    std::uint64_t uleb();
    std::int64_t sleb();
    // Up to a zero byte, which is passed over.
    std::string_view text();

    // The part of `bytes` from `offset` on, `size` long.
    static Bytes part(Bytes bytes, std::uint64_t offset, std::uint64_t size,
                      const std::string &name);

private:
    Bytes all;
    std::string name;
    std::size_t at = 0;
};

} // namespace macho
