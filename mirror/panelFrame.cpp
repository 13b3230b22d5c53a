#include "mirror/panelFrame.h"
#include "mirror/screenMirrorMac.h"

void PanelFrame::begin(int controlVersion, int panelCount) {
    bytes.clear();
    records = 0;
    narrow = controlVersion == 1;
    if (!narrow)
        append(panelCount >> 8);
    append(panelCount);
}

void PanelFrame::add(int panelID, RGB colour, int transitionTime) {
    if (narrow) {
        append(panelID);
        append(1); // frame count
    } else {
        append(panelID >> 8);
        append(panelID);
    }
    append(colour.r);
    append(colour.g);
    append(colour.b);
    append(0); // white
    if (!narrow)
        append(transitionTime >> 8);
    append(transitionTime);
    ++records;
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

void MirrorManager::getAnimDataFromFrame(unsigned char *frame, int numPanels, int controlVersion) {
    streamFrames.push_back(animDataLine(frame, numPanels, numPanels, controlVersion));
}
