#include "mirror/screenMirrorMac.h"
#include "mirror/runPhase.h"
#include "mirror/signals.h"

// Constructed when the library is loaded; `unload` destroys it when the library is unloaded.
[[clang::no_destroy]] MirrorManager mirrorManager;
MirrorManager *MirrorManager::instance = &mirrorManager;

namespace {

struct Unload {
    // When a signal ends the process, other threads may still be inside the library and use the
    // manager, so it is not destroyed.
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
    // Still joinable only if joining failed; std::thread's destructor would end the process.
    if (mirrorThread.joinable())
        releaseThread(mirrorThread);
}
