// A run from start to end: the mirroring thread and its sockets.
#include "mirror/displayStreams.h"
#include "mirror/runPhase.h"
#include "mirror/screenMirrorMac.h"
#include "mirror/sharedFlag.h"
#include "mirror/signals.h"

#include <cstdio>
#include <memory>

namespace {

constexpr int narrowPort = 60221;
constexpr int widePort = 60222;

} // namespace

// Host thread.
int MirrorManager::startMirror() {
    if (!isOwnRun())
        joinMirror(mirrorThread);
    if (mirrorThread.joinable()) {
        std::puts("Mirroring already running.");
        return 0;
    }
    if (devices.empty()) {
        std::puts("No devices.");
        return 0;
    }
    try {
        claimRun();
        runPhase = RunPhase::Starting;
        startMirroringThread(mirrorThread, static_runMirror);
    } catch (...) {
        runPhase = RunPhase::Idle;
        std::puts("Error starting mirroring");
        return -1;
    }
    // A stop before the thread has set `running` would be lost.
    runPhase.wait(RunPhase::Starting);
    return 1;
}

// Host thread.
int MirrorManager::stopMirror() {
    writeFlag(running, false);
    return joinMirror(mirrorThread) ? 1 : -1;
}

void MirrorManager::static_runMirror() {
    instance->runMirror();
}

// Mirroring thread.
void MirrorManager::runMirror() {
    installSignals(static_signalHandler);
    writeFlag(running, true);
    runPhase = RunPhase::Begun;
    runPhase.notify_all();
    try {
        const int deviceCount = static_cast<int>(devices.size());
        const auto sockets = std::make_unique<UdpSocket[]>(devices.size());
        // Without a stream, the functions that start and stop one may be missing, too.
        if (displayStream == nullptr || CGDisplayStreamStart(displayStream) != kCGErrorSuccess) {
            std::puts("Stream start failed!");
        } else {
            for (int i = 0; i < deviceCount; ++i)
                initStreamControlSocket(devices[i].ip, devices[i].controlVersion, sockets.get(), i);
            switch (mode) {
            case 0:
                mirrorModeMatch(deviceCount, sockets.get());
                break;
            case 1:
                mirrorModeMelt(deviceCount, sockets.get());
                break;
            case 2:
                mirrorModeFade(deviceCount, sockets.get());
                break;
            case 3:
                mirrorModePalette(deviceCount, sockets.get());
                break;
            default:
                break;
            }
            if (CGDisplayStreamStop(displayStream) != kCGErrorSuccess)
                std::puts("Stream stop failed!");
            deInitScreen();
        }
    } catch (...) {
        std::puts("Error during runMirror");
    }
    runPhase = RunPhase::Ended;
}

// Mirroring thread.
void MirrorManager::initStreamControlSocket(std::string ip, int controlVersion, UdpSocket *sockets,
                                            int index) {
    try {
        sockets[index].setRemote(ip, controlVersion == 1 ? narrowPort : widePort);
    } catch (...) {
        std::printf("Socket init %d failed\n", index);
    }
}
