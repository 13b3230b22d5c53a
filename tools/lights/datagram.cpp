#include "tools/lights/datagram.h"

namespace lights {

namespace {

// Where things stand in a layout. Offsets count from a record's first byte.
struct Format {
    std::size_t headerSize;
    std::size_t recordSize;
    std::size_t redOffset;
    std::size_t transitionOffset;
    std::size_t numberSize; // of counts, identifiers and transition times; big-endian
    bool hasFrameCount;     // the byte after the identifier
};

constexpr Format narrowFormat{1, 7, 2, 6, 1, true};
constexpr Format wideFormat{2, 8, 2, 6, 2, false};

const Format &formatOf(Layout layout) {
    return layout == Layout::Narrow ? narrowFormat : wideFormat;
}

std::uint16_t readNumber(const Format &format, std::span<const std::uint8_t> bytes,
                         std::size_t offset) {
    if (format.numberSize == 1)
        return bytes[offset];
    return static_cast<std::uint16_t>(bytes[offset] << 8 | bytes[offset + 1]);
}

std::string inRecord(std::size_t index, const std::string &text) {
    return "record " + std::to_string(index) + ": " + text;
}

// The count holds only the low bits of the number of records, so the length decides how many there
// are and the count must agree with it.
std::string findLengthProblem(const Format &format, std::span<const std::uint8_t> bytes) {
    const std::string length = std::to_string(bytes.size()) + " bytes";
    if (bytes.size() < format.headerSize)
        return length + ", too short for the panel count";
    const std::size_t rest = bytes.size() - format.headerSize;
    const std::size_t mask = format.numberSize == 1 ? 0xff : 0xffff;
    const std::size_t count = readNumber(format, bytes, 0);
    if (rest % format.recordSize != 0 || ((rest / format.recordSize) & mask) != count)
        return length + ", but a panel count of " + std::to_string(count) + " needs " +
               std::to_string(format.headerSize + format.recordSize * count);
    return {};
}

} // namespace

Layout layoutOf(std::int32_t controlVersion) {
    return controlVersion == 1 ? Layout::Narrow : Layout::Wide;
}

std::uint16_t wireId(Layout layout, std::int32_t panelID) {
    return static_cast<std::uint16_t>(layout == Layout::Narrow ? panelID & 0xff : panelID & 0xffff);
}

std::size_t datagramSize(Layout layout, std::size_t panels) {
    return formatOf(layout).headerSize + formatOf(layout).recordSize * panels;
}

std::size_t mostPanels(Layout layout) {
    constexpr std::size_t largestDatagram = 65507;
    return layout == Layout::Narrow
               ? 255
               : (largestDatagram - wideFormat.headerSize) / wideFormat.recordSize;
}

Decoding decode(Layout layout, std::span<const std::uint8_t> bytes) {
    const Format &format = formatOf(layout);
    Decoding decoding;
    decoding.malformed = findLengthProblem(format, bytes);
    if (!decoding.malformed.empty())
        return decoding;

    std::vector<Record> records;
    records.reserve((bytes.size() - format.headerSize) / format.recordSize);
    for (std::size_t at = format.headerSize; at < bytes.size(); at += format.recordSize) {
        const auto fields = bytes.subspan(at, format.recordSize);
        const auto *colour = fields.data() + format.redOffset;
        if (format.hasFrameCount && fields[1] != 1) {
            decoding.malformed =
                inRecord(records.size(), "frame count " + std::to_string(fields[1]) + ", not 1");
            return decoding;
        }
        if (colour[3] != 0) {
            decoding.malformed =
                inRecord(records.size(), "white " + std::to_string(colour[3]) + ", not 0");
            return decoding;
        }
        records.push_back({readNumber(format, fields, 0),
                           {colour[0], colour[1], colour[2]},
                           readNumber(format, fields, format.transitionOffset)});
    }
    decoding.records = std::move(records);
    return decoding;
}

std::string findForeignRecord(const std::vector<Record> &records, const KnownIds &knownIds) {
    KnownIds seen;
    for (std::size_t i = 0; i < records.size(); ++i) {
        const auto known = knownIds.find(records[i].id);
        const std::string name = "panel id " + std::to_string(records[i].id);
        if (known == knownIds.end())
            return inRecord(i, name + " is unknown to this device");
        if (++seen[records[i].id] > known->second)
            return inRecord(i, name + " occurs more often than panels have it");
    }
    return {};
}

} // namespace lights
