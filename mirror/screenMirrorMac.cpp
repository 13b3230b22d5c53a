#include "mirror/screenMirrorMac.h"
#include "mirror/runPhase.h"
#include "mirror/signals.h"

// Made when the library is loaded and destroyed when it is unloaded, with the run stopped first.
MirrorManager mirrorManager;
MirrorManager *MirrorManager::instance = &mirrorManager;

MirrorManager::MirrorManager() = default;

MirrorManager::~MirrorManager() {
    stopMirror();
    restoreSignals();
    // Only a thread that could not be joined is still here, and std::thread would abort over it.
    if (mirrorThread.joinable())
        letGo(mirrorThread);
}
