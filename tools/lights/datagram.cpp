#include "tools/lights/datagram.h"

#include "tools/lights/text.h"

namespace lights {

namespace {

// Offsets from a record's first byte.
constexpr std::size_t redOffset = 2;
constexpr std::size_t transitionOffset = 6;

// Size in bytes of counts, identifiers and transition times; big-endian. The header is a count.
std::size_t numberSize(Layout layout) {
    return layout == Layout::Narrow ? 1 : 2;
}

std::size_t recordSize(Layout layout) {
    return transitionOffset + numberSize(layout);
}

std::uint16_t readNumber(Layout layout, std::span<const std::uint8_t> bytes, std::size_t offset) {
    if (layout == Layout::Narrow)
        return bytes[offset];
    return static_cast<std::uint16_t>(bytes[offset] << 8 | bytes[offset + 1]);
}

std::string inRecord(std::size_t index, const std::string &text) {
    return "record " + std::to_string(index) + ": " + text;
}

// The count holds only the low bits of the number of records, so the length decides how many there
// are and the count must agree with it.
std::string findLengthProblem(Layout layout, std::span<const std::uint8_t> bytes) {
    const std::string length = counted(bytes.size(), "byte");
    if (bytes.size() < datagramSize(layout, 0))
        return length + ", too short for the panel count";
    const std::size_t records = (bytes.size() - datagramSize(layout, 0)) / recordSize(layout);
    const std::size_t mask = layout == Layout::Narrow ? 0xff : 0xffff;
    const std::size_t count = readNumber(layout, bytes, 0);
    if (bytes.size() != datagramSize(layout, records) || (records & mask) != count)
        return length + ", but a panel count of " + std::to_string(count) + " needs " +
               std::to_string(datagramSize(layout, count));
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
    return numberSize(layout) + recordSize(layout) * panels;
}

std::size_t maxPanels(Layout layout) {
    constexpr std::size_t largestDatagram = 65507;
    return layout == Layout::Narrow ? 255
                                    : (largestDatagram - numberSize(layout)) / recordSize(layout);
}

Decoding decode(Layout layout, std::span<const std::uint8_t> bytes) {
    if (const std::string problem = findLengthProblem(layout, bytes); !problem.empty())
        return {{}, problem};
    Decoding decoding;
    std::vector<Record> &records = decoding.records;
    records.reserve(bytes.size() / recordSize(layout));
    for (std::size_t at = datagramSize(layout, 0); at < bytes.size(); at += recordSize(layout)) {
        const auto fields = bytes.subspan(at, recordSize(layout));
        const auto *colour = fields.data() + redOffset;
        const auto failWith = [&](const std::string &problem) {
            return Decoding{{}, inRecord(records.size(), problem)};
        };
        if (layout == Layout::Narrow && fields[1] != 1)
            return failWith("frame count " + std::to_string(fields[1]) + ", not 1");
        if (colour[3] != 0)
            return failWith("white " + std::to_string(colour[3]) + ", not 0");
        records.push_back({readNumber(layout, fields, 0),
                           {colour[0], colour[1], colour[2]},
                           readNumber(layout, fields, transitionOffset)});
    }
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
            return inRecord(i, name + " occurs in more records than panels have it");
    }
    return {};
}

} // namespace lights
