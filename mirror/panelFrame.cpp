#include "mirror/panelFrame.h"

void PanelFrame::begin(int controlVersion, int panelCount) {
    used = 0;
    records = 0;
    narrow = controlVersion == 1;
    if (!narrow)
        bytes[used++] = static_cast<unsigned char>(panelCount >> 8);
    bytes[used++] = static_cast<unsigned char>(panelCount);
}

std::string animDataLine(const unsigned char *frame, int recordCount, int numPanels,
                         int controlVersion) {
    const bool narrow = controlVersion == 1;
    std::string line = std::to_string(numPanels) + ' ';
    for (int i = 0; i < recordCount; ++i) {
        const unsigned char *record = narrow ? frame + 1 + 7l * i : frame + 2 + 8l * i;
        const unsigned panelID = narrow ? record[0] : record[0] << 8u | record[1];
        if (i > 0)
            line += ' ';
        line += std::to_string(panelID) + " 1";
        for (int channel = 2; channel < 6; ++channel)
            line += ' ' + std::to_string(record[channel]);
        line += " 5";
    }
    return line;
}
