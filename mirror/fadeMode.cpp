// Fade mode: all panels take the dominant colour together.
#include "mirror/dominantCycle.h"

namespace {

struct Fade {
    MirrorManager &manager;
    DominantCycle dominant;

    Cycle next() { return dominant.next(manager); }

    bool buildDatagram(int, const Device &device, PanelFrame &frame) {
        return addEveryPanel(
            device, frame, [&](const Panel &) { return dominant.sent; },
            [&](const Panel &) { return manager.fadeTransitionTime; });
    }

    std::int32_t frameDelay() const { return manager.fadeFrameDelay; }
};

} // namespace

void MirrorManager::mirrorModeFade(int deviceCount, UdpSocket *sockets) {
    setScreenSamplePixels();
    runFrameLoop(*this, deviceCount, sockets, Fade{*this, {}});
}
