// The frame loop that all modes share. Mirroring thread.
//
// A mode is a plain struct with three members:
//
//     Cycle next();
//         Reads the screen and decides what this cycle does.
//     bool buildDatagram(int deviceIndex, const Device &device, PanelFrame &frame);
//         Builds the device's datagram; false when there is nothing to send to this device. Called
//         for every device, in order, in each cycle that sends. Modes in which every panel gets a
//         record can use addEveryPanel().
//     std::int32_t frameDelay() const;
//         Milliseconds to sleep after a cycle; 0 or less: none.
//
// A new mode consists of such a struct in its own file, a method of MirrorManager that passes it to
// runFrameLoop(), and a case in the run loop's switch.
#pragma once

#include "mirror/panelFrame.h"
#include "mirror/screenMirrorMac.h"
#include "mirror/sharedFlag.h"

#include <algorithm>
#include <chrono>
#include <thread>

enum class Cycle {
    Send,  // send a frame, then sleep
    Hold,  // nothing to send; only sleep
    Again, // start the next cycle at once
};

// Builds a datagram with a record for every panel, calling `colourOf(panel)` and then
// `timeOf(panel)` for each. Always true.
template <class ColourOf, class TimeOf>
bool addEveryPanel(const Device &device, PanelFrame &frame, ColourOf colourOf, TimeOf timeOf) {
    frame.begin(device.controlVersion, device.numPanels);
    const int count = std::min(device.numPanels, static_cast<int>(device.panels.size()));
    for (int i = 0; i < count; ++i) {
        const Panel &panel = device.panels[static_cast<std::size_t>(i)];
        const RGB colour = colourOf(panel);
        frame.add(panel.panelID, colour, timeOf(panel));
    }
    return true;
}

// Sends one frame to every device. A capture that was requested before the frame began copies this
// whole frame and is then complete.
template <class Mode>
void sendFrame(MirrorManager &manager, int deviceCount, UdpSocket *sockets, Mode &mode,
               PanelFrame &frame) {
    const bool capture = readFlag(manager.captureRequested);
    for (int d = 0; d < deviceCount; ++d) {
        const Device &device = manager.devices[static_cast<std::size_t>(d)];
        if (!mode.buildDatagram(d, device, frame))
            continue;
        sockets[d].send(reinterpret_cast<char *>(frame.data()), frame.length());
        if (capture)
            manager.streamFrames.push_back(animDataLine(frame.data(), frame.recordCount(),
                                                        device.numPanels, device.controlVersion));
    }
    if (capture)
        writeFlag(manager.captureRequested, false);
}

// Cycles until `running` is false, which is checked only between cycles: a cycle that has begun
// sends to every device.
template <class Mode>
void runFrameLoop(MirrorManager &manager, int deviceCount, UdpSocket *sockets, Mode mode) {
    PanelFrame frame;
    while (readFlag(manager.running)) {
        const Cycle cycle = mode.next();
        if (cycle == Cycle::Again)
            continue;
        if (cycle == Cycle::Send)
            sendFrame(manager, deviceCount, sockets, mode, frame);
        if (mode.frameDelay() > 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(mode.frameDelay()));
    }
}
