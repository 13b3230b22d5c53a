// One frame of panel colours for one device: the datagram and its text form.
#pragma once

#include "colour/colour.h"

#include <cstdint>
#include <string>
#include <vector>

// Builds the datagram of one device after another in the same storage. docs/datagrams.md shows the
// bytes. Values wider than their field keep their low bits.
class PanelFrame {
public:
    // Starts anew: the narrow layout for control version 1, else the wide one. `panelCount` is
    // what the header says, whatever is added afterwards.
    void begin(int controlVersion, int panelCount);

    // Appends one panel's record.
    void add(int panelID, RGB colour, int transitionTime);

    unsigned char *data() { return bytes.data(); }
    int length() const { return static_cast<int>(bytes.size()); }
    int recordCount() const { return records; }

private:
    void append(int value) { bytes.push_back(static_cast<unsigned char>(value)); }

    std::vector<unsigned char> bytes;
    bool narrow = false;
    int records = 0;
};

// The text form of a datagram: `numPanels`, one space, then for each of its `recordCount` records
// the panel's identifier, 1, red, green, blue, white, 5, all separated by single spaces. The 1 and
// the 5 stand there whatever the datagram carries.
std::string animDataLine(const unsigned char *frame, int recordCount, int numPanels,
                         int controlVersion);
