#include "tests/macho/loader/frameRecords.h"

namespace macho {

namespace {

const std::string table = "the frame table";

constexpr std::uint8_t relative64 = 0x10;         // to the place where it stands
constexpr std::uint8_t relative32 = 0x1b;         //
constexpr std::uint8_t relativeIndirect32 = 0x9b; // leads to where the address is kept

// What all functions of one kind share.
struct Common {
    std::uint64_t personalityPointer = 0;
    bool hasLanguageData = false;
    std::uint8_t languageDataEncoding = 0;
    std::uint8_t functionEncoding = 0;
    Bytes rules;
};

class FrameTable {
public:
    FrameTable(const ImageFile &file, const Section &section, Bytes bytes)
        : file(file), address(section.address), bytes(bytes) {}

    FrameRecord read(std::uint32_t offset) const {
        const Bytes content = contentAt(offset);
        ByteReader reader(content, table);
        const std::size_t start = offset + sizeof(std::uint32_t);
        const auto back = reader.read<std::uint32_t>();
        if (back == 0 || back > start)
            throw LoadError(table + " has a record where none should be");
        const Common common = readCommon(static_cast<std::uint32_t>(start - back));
        FrameRecord record = {};
        record.start = pointer(reader, start, common.functionEncoding);
        record.size = common.functionEncoding == relative32 ? reader.read<std::uint32_t>()
                                                            : reader.read<std::uint64_t>();
        record.personalityPointer = common.personalityPointer;
        const std::uint64_t extraSize = reader.uleb();
        const std::size_t extraEnd = reader.position() + extraSize;
        if (common.hasLanguageData && extraSize > 0)
            record.languageData = pointer(reader, start, common.languageDataEncoding);
        reader.moveTo(extraEnd);
        const Bytes own = reader.take(content.size() - extraEnd);
        record.rules.assign(common.rules.begin(), common.rules.end());
        record.rules.insert(record.rules.end(), own.begin(), own.end());
        return record;
    }

private:
    // Of a record, without its length.
    Bytes contentAt(std::uint32_t offset) const {
        ByteReader reader(bytes, table);
        reader.moveTo(offset);
        return reader.take(reader.read<std::uint32_t>());
    }

    // The address, in the image, that a pointer at the reader's place leads to.
    std::uint64_t pointer(ByteReader &reader, std::size_t contentStart,
                          std::uint8_t encoding) const {
        const std::uint64_t place = address + contentStart + reader.position();
        std::uint64_t target;
        if (encoding == relative64)
            target = place + reader.read<std::uint64_t>();
        else if (encoding == relative32 || encoding == relativeIndirect32)
            target = place + static_cast<std::uint64_t>(
                                 static_cast<std::int64_t>(reader.read<std::int32_t>()));
        else
            throw LoadError(table + " has a pointer of the unknown encoding " +
                            std::to_string(encoding));
        if (target > file.size() - sizeof(void *))
            throw LoadError(table + " points outside the image");
        return target;
    }

    Common readCommon(std::uint32_t offset) const {
        const Bytes content = contentAt(offset);
        ByteReader reader(content, table);
        const std::size_t start = offset + sizeof(std::uint32_t);
        if (reader.read<std::uint32_t>() != 0 || reader.read<std::uint8_t>() != 1)
            throw LoadError(table + " has a common record of an unknown kind");
        const std::string_view letters = reader.text();
        const std::uint64_t codeUnit = reader.uleb();
        const std::int64_t dataUnit = reader.sleb();
        if (letters.empty() || letters.front() != 'z' || codeUnit != 1 || dataUnit != -8 ||
            reader.read<std::uint8_t>() != 16)
            throw LoadError(table + " has a common record of an unknown kind");
        const std::uint64_t extraSize = reader.uleb();
        const std::size_t extraEnd = reader.position() + extraSize;
        Common common;
        for (const char letter : letters.substr(1)) {
            if (letter == 'R') {
                common.functionEncoding = reader.read<std::uint8_t>();
            } else if (letter == 'L') {
                common.hasLanguageData = true;
                common.languageDataEncoding = reader.read<std::uint8_t>();
            } else if (letter == 'P') {
                const auto encoding = reader.read<std::uint8_t>();
                if (encoding != relativeIndirect32)
                    throw LoadError(table + " has a personality of an unknown encoding");
                common.personalityPointer = pointer(reader, start, encoding);
            } else {
                throw LoadError(table + " has the unknown mark " + std::string(1, letter));
            }
        }
        reader.moveTo(extraEnd);
        common.rules = reader.take(content.size() - extraEnd);
        return common;
    }

    const ImageFile &file;
    std::uint64_t address;
    Bytes bytes;
};

} // namespace

FrameRecord readFrameRecord(const ImageFile &file, const Mapping &mapping, std::uint32_t offset) {
    const Section *section = file.section("__TEXT", "__eh_frame");
    if (section == nullptr)
        throw LoadError("the unwind table refers to " + table + ", which is missing");
    return FrameTable(file, *section,
                      Bytes(mapping.at<std::uint8_t>(section->address), section->size))
        .read(offset);
}

} // namespace macho
