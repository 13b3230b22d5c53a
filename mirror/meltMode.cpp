// Melt mode: all panels take the dominant colour, each with its own random transition time.
#include "mirror/dominantCycle.h"

#include <cstdlib>
#include <ctime>

namespace {

struct Melt {
    MirrorManager &manager;
    DominantCycle dominant;

    Cycle next() { return dominant.next(manager); }

    bool buildDatagram(int, const Device &device, PanelFrame &frame) {
        return addEveryPanel(
            device, frame, [&](const Panel &) { return dominant.sent; },
            [&](const Panel &) {
                return std::rand() % manager.meltTransitionTimeRange +
                       manager.meltTransitionTimeMin;
            });
    }

    std::int32_t frameDelay() const { return manager.meltFrameDelay; }
};

} // namespace

void MirrorManager::mirrorModeMelt(int deviceCount, UdpSocket *sockets) {
    setScreenSamplePixels();
    std::srand(static_cast<unsigned>(std::time(nullptr)));
    runFrameLoop(*this, deviceCount, sockets, Melt{*this, {}});
}
