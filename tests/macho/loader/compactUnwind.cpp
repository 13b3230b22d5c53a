#include "tests/macho/loader/compactUnwind.h"

#include <map>

namespace macho {

namespace {

const std::string table = "the unwind table";

constexpr std::uint32_t encodingHasLanguageData = 0x40000000;
constexpr std::uint32_t encodingPersonalityMask = 0x30000000;
constexpr unsigned encodingPersonalityShift = 28;

constexpr std::uint32_t pageRegular = 2;
constexpr std::uint32_t pageCompressed = 3;

struct TableHeader {
    std::uint32_t version;
    std::uint32_t commonEncodingsOffset;
    std::uint32_t commonEncodingsCount;
    std::uint32_t personalitiesOffset;
    std::uint32_t personalitiesCount;
    std::uint32_t indexOffset;
    std::uint32_t indexCount;
};

struct IndexEntry {
    std::uint32_t functionOffset;
    std::uint32_t pageOffset;
    std::uint32_t languageDataOffset;
};

struct PageHeader {
    std::uint32_t kind;
    std::uint16_t entriesOffset;
    std::uint16_t entriesCount;
};

struct OffsetPair {
    std::uint32_t first;
    std::uint32_t second;
};

class UnwindTable {
public:
    UnwindTable(const ImageFile &file, Bytes bytes) : file(file), bytes(bytes) {
        const auto header = readerAt(0).read<TableHeader>();
        if (header.version != 1)
            throw LoadError(table + " has the unknown version " + std::to_string(header.version));
        common = readMany<std::uint32_t>(header.commonEncodingsOffset, header.commonEncodingsCount);
        personalities =
            readMany<std::uint32_t>(header.personalitiesOffset, header.personalitiesCount);
        index = readMany<IndexEntry>(header.indexOffset, header.indexCount);
        if (index.empty())
            throw LoadError(table + " has no index");
        readLanguageData();
        for (std::size_t i = 0; i + 1 < index.size(); ++i)
            readPage(index[i]);
        finish(index.back().functionOffset);
    }

    std::vector<UnwindEntry> entries;

private:
    ByteReader readerAt(std::size_t offset) const {
        ByteReader reader(bytes, table);
        reader.moveTo(offset);
        return reader;
    }

    template <class T> std::vector<T> readMany(std::size_t offset, std::size_t count) const {
        std::vector<T> values;
        ByteReader reader = readerAt(offset);
        while (values.size() < count)
            values.push_back(reader.template read<T>());
        return values;
    }

    void readLanguageData() {
        const std::size_t start = index.front().languageDataOffset;
        const std::size_t end = index.back().languageDataOffset;
        if (end < start)
            throw LoadError(table + " has its language data in disorder");
        for (const OffsetPair &pair : readMany<OffsetPair>(start, (end - start) / 8))
            languageData[pair.first] = pair.second;
    }

    void readPage(const IndexEntry &entry) {
        if (entry.pageOffset == 0)
            return;
        ByteReader reader = readerAt(entry.pageOffset);
        const auto header = reader.read<PageHeader>();
        const std::size_t entriesAt = std::size_t{entry.pageOffset} + header.entriesOffset;
        if (header.kind == pageRegular) {
            for (const OffsetPair &pair : readMany<OffsetPair>(entriesAt, header.entriesCount))
                add(pair.first, pair.second);
        } else if (header.kind == pageCompressed) {
            const auto encodingsOffset = reader.read<std::uint16_t>();
            const auto encodingsCount = reader.read<std::uint16_t>();
            std::vector<std::uint32_t> encodings = common;
            for (const std::uint32_t encoding : readMany<std::uint32_t>(
                     std::size_t{entry.pageOffset} + encodingsOffset, encodingsCount))
                encodings.push_back(encoding);
            for (const std::uint32_t packed :
                 readMany<std::uint32_t>(entriesAt, header.entriesCount)) {
                if (packed >> 24 >= encodings.size())
                    throw LoadError(table + " uses an encoding that it does not list");
                add(entry.functionOffset + (packed & 0xffffff), encodings[packed >> 24]);
            }
        } else {
            throw LoadError(table + " has a page of the unknown kind " +
                            std::to_string(header.kind));
        }
    }

    void add(std::uint32_t start, std::uint32_t encoding) {
        finish(start);
        UnwindEntry entry = {start, start, encoding, 0, 0};
        const std::uint32_t personality =
            (encoding & encodingPersonalityMask) >> encodingPersonalityShift;
        if (personality > personalities.size())
            throw LoadError(table + " uses a personality that it does not list");
        if (personality != 0)
            entry.personalityPointer = personalities[personality - 1];
        if ((encoding & encodingHasLanguageData) != 0) {
            const auto data = languageData.find(start);
            if (data == languageData.end())
                throw LoadError(table + " lacks language data that it announces");
            entry.languageData = data->second;
        }
        if (entry.personalityPointer > file.size() - sizeof(void *) ||
            entry.languageData >= file.size())
            throw LoadError(table + " points outside the image");
        entries.push_back(entry);
    }

    // The last entry ends where the next one begins.
    void finish(std::uint64_t end) {
        if (end > file.size() || (!entries.empty() && end < entries.back().start))
            throw LoadError(table + " is in disorder");
        if (!entries.empty())
            entries.back().end = end;
    }

    const ImageFile &file;
    Bytes bytes;
    std::vector<std::uint32_t> common;
    std::vector<std::uint32_t> personalities;
    std::vector<IndexEntry> index;
    std::map<std::uint32_t, std::uint32_t> languageData;
};

} // namespace

std::vector<UnwindEntry> unwindEntriesOf(const ImageFile &file, const Mapping &mapping) {
    const Section *section = file.section("__TEXT", "__unwind_info");
    if (section == nullptr)
        return {};
    return UnwindTable(file, Bytes(mapping.at<std::uint8_t>(section->address), section->size))
        .entries;
}

} // namespace macho
