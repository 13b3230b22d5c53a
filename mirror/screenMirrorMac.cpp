#include "mirror/screenMirrorMac.h"
#include "mirror/runPhase.h"
#include "mirror/signals.h"

// Made when the library is loaded and destroyed when it is unloaded, with the run stopped first.
[[clang::no_destroy]] MirrorManager mirrorManager;
MirrorManager *MirrorManager::instance = &mirrorManager;

namespace {

struct Unload {
    // A signal may end the process while other threads are still inside the library: what they use
    // is then left to them.
    ~Unload() {
        if (!endsBySignal())
            mirrorManager.~MirrorManager();
    }
} unload;

} // namespace

MirrorManager::MirrorManager() = default;

MirrorManager::~MirrorManager() {
    stopMirror();
    restoreSignals();
    // Only a thread that could not be joined is still here, and std::thread would abort over it.
    if (mirrorThread.joinable())
        letGo(mirrorThread);
}
