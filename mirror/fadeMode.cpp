// Fade mode: all panels take the dominant colour together.
#include "mirror/dominantCycle.h"

namespace {

struct Fade {
    MirrorManager &manager;
    DominantCycle dominant;

    Cycle next() { return dominant.next(manager); }

    bool light(int, const Device &device, PanelFrame &frame) {
        frame.begin(device.controlVersion, device.numPanels);
        for (const Panel &panel : device.panels)
            frame.add(panel.panelID, dominant.sent, manager.fadeTransitionTime);
        return true;
    }

    std::int32_t frameDelay() const { return manager.fadeFrameDelay; }
};

} // namespace

void MirrorManager::mirrorModeFade(int deviceCount, UdpSocket *sockets) {
    setScreenSamplePixels();
    runFrameLoop(*this, deviceCount, sockets, Fade{*this, {}});
}
