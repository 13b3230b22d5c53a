// Match mode: each panel shows the colour of the screen behind it, in every cycle.
#include "mirror/frameLoop.h"

namespace {

struct Match {
    const MirrorManager &manager;

    Cycle next() { return Cycle::send; }

    bool light(int, const Device &device, PanelFrame &frame) {
        const Frame screen = manager.currentFrame();
        return lightEveryPanel(
            device, frame,
            [&](const Panel &panel) {
                return rootMeanSquare(screen, panel.samplePixels, panel.numSamplePixels);
            },
            [&](const Panel &) { return manager.matchTransitionTime; });
    }

    std::int32_t frameDelay() const { return manager.matchFrameDelay; }
};

} // namespace

void MirrorManager::mirrorModeMatch(int deviceCount, UdpSocket *sockets) {
    setScreenSamplePixels();
    runFrameLoop(*this, deviceCount, sockets, Match{*this});
}
