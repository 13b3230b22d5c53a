// One frame of panel colours for one device: the datagram and its text form.
#pragma once

#include "colour/colour.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// Builds the datagrams of one device after another in the same buffer. docs/datagrams.md shows the
// bytes. Values wider than their field keep their low bits.
class PanelFrame {
public:
    // Starts a new datagram: the narrow layout for control version 1, else the wide one. The header
    // contains `panelCount`, however many records are added afterwards.
    void begin(int controlVersion, int panelCount);

    // Appends one panel's record.
    void add(int panelID, RGB colour, int transitionTime) {
        constexpr auto byte = [](int value) { return static_cast<unsigned char>(value); };
        if (bytes.size() - used < recordRoom)
            bytes.resize(2 * bytes.size());
        unsigned char *record = bytes.data() + used;
        used += narrow ? 7 : 8;
        record[0] = narrow ? byte(panelID) : byte(panelID >> 8);
        record[1] = narrow ? byte(1) : byte(panelID); // 1: frame count
        record[2] = colour.r;
        record[3] = colour.g;
        record[4] = colour.b;
        record[5] = 0; // white
        record[6] = narrow ? byte(transitionTime) : byte(transitionTime >> 8);
        record[7] = byte(transitionTime); // wide only; else overwritten or not part of the datagram
        ++records;
    }

    unsigned char *data() { return bytes.data(); }
    int length() const { return static_cast<int>(used); }
    int recordCount() const { return records; }

private:
    static constexpr std::size_t recordRoom = 8;

    std::vector<unsigned char> bytes =
        std::vector<unsigned char>(1024); // the first `used` bytes are the datagram
    std::size_t used = 0;
    bool narrow = false;
    int records = 0;
};

// The text form of a datagram: `numPanels`, one space, then for each of its `recordCount` records
// the panel's identifier, 1, red, green, blue, white, 5, all separated by single spaces. The 1 and
// the 5 are constants, whatever the datagram contains.
std::string animDataLine(const unsigned char *frame, int recordCount, int numPanels,
                         int controlVersion);
