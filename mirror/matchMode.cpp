// Match mode: each panel shows the colour of the screen behind it, in every cycle.
#include "mirror/firstFrame.h"
#include "mirror/frameLoop.h"

#include <algorithm>

namespace {

// Whether every sample of every panel is on the frame. The answer does not change during a run, so
// it is computed once.
bool onFrame(const Frame &frame, const std::vector<Device> &devices) {
    return std::all_of(devices.begin(), devices.end(), [&](const Device &device) {
        return std::all_of(device.panels.begin(), device.panels.end(), [&](const Panel &panel) {
            return frame.holds(panel.samplePixels, panel.numSamplePixels);
        });
    });
}

struct Match {
    const MirrorManager &manager;
    const bool allOnFrame = onFrame(manager.currentFrame(), manager.devices);

    // A first frame that starts to arrive after the wait may be mixed with black. The next cycle,
    // which waits for it again, corrects the colours unless that wait gives up.
    Cycle next() {
        awaitFirstFrame(manager.running);
        return Cycle::Send;
    }

    bool buildDatagram(int, const Device &device, PanelFrame &frame) {
        const Frame screen = manager.currentFrame();
        const auto mean =
            allOnFrame && screen.bytes != nullptr ? rootMeanSquareOnFrame : rootMeanSquare;
        return addEveryPanel(
            device, frame,
            [&](const Panel &panel) {
                return mean(screen, panel.samplePixels, panel.numSamplePixels);
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
