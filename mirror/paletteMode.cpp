// Palette mode: panels take random colours of the screen's palette and hold them for random times.
#include "mirror/frameLoop.h"

#include <cstdlib>
#include <ctime>

namespace {

struct Palette {
    MirrorManager &manager;
    std::vector<std::vector<std::int32_t>> holdTicks; // by device and panel; below 2: change now
    std::vector<RGB> colours;                         // of this tick
    std::vector<std::size_t> changing = {};           // the panels of one device that change

    // getPalette() replaces the manager's palette. This tick uses its own copy of the colours, so
    // that they cannot change half-way.
    Cycle next() {
        // Wait for the lock only while the run continues: a signal handler that interrupts
        // getPalette() ends the run on the very thread that holds the lock.
        for (int tries = 0; !manager.mutex.try_lock(); ++tries) {
            if (!readFlag(manager.running))
                return Cycle::Again;
            waitBriefly(tries);
        }
        const std::lock_guard lock(manager.mutex, std::adopt_lock);
        colours = manager.getPaletteFromScreen(manager.paletteSize);
        manager.palette = colours;
        return colours.empty() ? Cycle::Again : Cycle::Send;
    }

    // Called between two tries. getPalette() normally releases the lock within the first thousand.
    static void waitBriefly(int tries) {
        if (tries < 1000)
            std::this_thread::yield();
        else
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }

    // Only the panels whose hold time has expired get a record.
    bool buildDatagram(int deviceIndex, const Device &device, PanelFrame &frame) {
        std::vector<std::int32_t> &hold = holdTicks[static_cast<std::size_t>(deviceIndex)];
        changing.clear();
        for (std::size_t p = 0; p < hold.size(); ++p) {
            if (hold[p] < 2) {
                hold[p] = std::rand() % manager.paletteTransitionTimeRange +
                          manager.paletteTransitionTimeMin;
                changing.push_back(p);
            } else {
                --hold[p];
            }
        }
        frame.begin(device.controlVersion, static_cast<int>(changing.size()));
        for (const std::size_t p : changing) {
            const RGB colour = colours[static_cast<std::size_t>(std::rand()) % colours.size()];
            frame.add(device.panels[p].panelID, colour, hold[p]);
        }
        return !changing.empty();
    }

    std::int32_t frameDelay() const { return manager.paletteFrameDelay; }
};

} // namespace

void MirrorManager::mirrorModePalette(int deviceCount, UdpSocket *sockets) {
    setScreenSamplePixels();
    std::srand(static_cast<unsigned>(std::time(nullptr)));
    std::vector<std::vector<std::int32_t>> holdTicks;
    holdTicks.reserve(devices.size());
    for (int d = 0; d < deviceCount; ++d)
        holdTicks.emplace_back(
            static_cast<std::size_t>(devices[static_cast<std::size_t>(d)].numPanels));
    runFrameLoop(*this, deviceCount, sockets, Palette{*this, std::move(holdTicks), {}});
}
