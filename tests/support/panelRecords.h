// Datagrams and their text form, encoded and decoded without the library.
#pragma once

#include "tests/support/lightReceiver.h"

#include <cstdint>
#include <string>
#include <vector>

namespace test {

struct Record {
    int id = 0;
    std::uint32_t colour = 0; // 0xRRGGBB
    int white = 0;
    int transition = 0;

    bool operator==(const Record &) const = default;
};

// The datagram of these records for a light of `controlVersion`.
inline Datagram encode(int controlVersion, const std::vector<Record> &records) {
    const bool narrow = controlVersion == 1;
    Datagram bytes;
    const auto append = [&](int value, bool wide) {
        if (wide)
            bytes.push_back(static_cast<std::uint8_t>(value / 256 % 256));
        bytes.push_back(static_cast<std::uint8_t>(value % 256));
    };
    append(static_cast<int>(records.size()), !narrow);
    for (const Record &record : records) {
        append(record.id & 0xffff, !narrow);
        if (narrow)
            append(1, false);
        append(static_cast<int>(record.colour >> 16 & 0xff), false);
        append(static_cast<int>(record.colour >> 8 & 0xff), false);
        append(static_cast<int>(record.colour & 0xff), false);
        append(record.white, false);
        append(record.transition & 0xffff, !narrow);
    }
    return bytes;
}

// The records of a datagram; none if its length or its frame counts do not fit `controlVersion`.
inline std::vector<Record> decode(int controlVersion, const Datagram &bytes) {
    const bool narrow = controlVersion == 1;
    const std::size_t header = narrow ? 1 : 2;
    const std::size_t stride = narrow ? 7 : 8;
    if (bytes.size() < header)
        return {};
    const std::size_t count = narrow ? bytes[0] : bytes[0] * 256u + bytes[1];
    if (bytes.size() != header + stride * count)
        return {};
    std::vector<Record> records;
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint8_t *at = bytes.data() + header + stride * i;
        if (narrow && at[1] != 1)
            return {};
        Record record;
        record.id = narrow ? at[0] : at[0] * 256 + at[1];
        record.colour = static_cast<std::uint32_t>(at[2]) << 16 |
                        static_cast<std::uint32_t>(at[3]) << 8 | at[4];
        record.white = at[5];
        record.transition = narrow ? at[6] : at[6] * 256 + at[7];
        records.push_back(record);
    }
    return records;
}

// The text form of these records for a light with `panelCount` panels.
inline std::string lineOf(int panelCount, const std::vector<Record> &records) {
    std::string line = std::to_string(panelCount) + " ";
    for (std::size_t i = 0; i < records.size(); ++i) {
        const Record &record = records[i];
        line += (i > 0 ? " " : "") + std::to_string(record.id) + " 1 " +
                std::to_string(record.colour >> 16) + " " +
                std::to_string(record.colour >> 8 & 0xff) + " " +
                std::to_string(record.colour & 0xff) + " " + std::to_string(record.white) + " 5";
    }
    return line;
}

} // namespace test
