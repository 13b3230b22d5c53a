#include "tests/macho/loader/byteReader.h"

#include <algorithm>

namespace macho {

void ByteReader::moveTo(std::size_t position) {
    if (position > all.size())
        throw LoadError(name + " points past its end");
    at = position;
}

Bytes ByteReader::take(std::size_t count) {
    if (count > all.size() - at)
        throw LoadError(name + " is cut off");
    const Bytes taken = all.subspan(at, count);
    at += count;
    return taken;
}

std::uint64_t ByteReader::uleb() {
    std::uint64_t value = 0;
    for (unsigned shift = 0;; shift += 7) {
        const std::uint64_t byte = read<std::uint8_t>();
        const std::uint64_t bits = byte & 0x7f;
        if (shift > 63 || bits << shift >> shift != bits)
            throw LoadError(name + " holds a number of more than 64 bits");
        value |= bits << shift;
        if ((byte & 0x80) == 0)
            return value;
    }
}

std::int64_t ByteReader::sleb() {
    std::uint64_t value = 0;
    for (unsigned shift = 0;; shift += 7) {
        const std::uint64_t byte = read<std::uint8_t>();
        if (shift > 63)
            throw LoadError(name + " holds a number of more than 64 bits");
        value |= (byte & 0x7f) << shift;
        if ((byte & 0x80) != 0)
            continue;
        if ((byte & 0x40) != 0 && shift + 7 < 64)
            value |= ~std::uint64_t{0} << (shift + 7);
        return static_cast<std::int64_t>(value);
    }
}

std::string_view ByteReader::text() {
    const Bytes rest = all.subspan(at);
    const auto end = std::find(rest.begin(), rest.end(), std::uint8_t{0});
    if (end == rest.end())
        throw LoadError(name + " holds a text without an end");
    const auto length = static_cast<std::size_t>(end - rest.begin());
    at += length + 1;
    return {reinterpret_cast<const char *>(rest.data()), length};
}

Bytes ByteReader::part(Bytes bytes, std::uint64_t offset, std::uint64_t size,
                       const std::string &name) {
    if (offset > bytes.size() || size > bytes.size() - offset)
        throw LoadError(name + " reaches past the end of the file");
    return bytes.subspan(offset, size);
}

} // namespace macho
