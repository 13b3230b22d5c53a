// The handler of the signals that end a run.
#include "mirror/runPhase.h"
#include "mirror/screenMirrorMac.h"
#include "mirror/sharedFlag.h"
#include "mirror/signals.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>

// Waits for the run to reach a phase, as a join would, but not for ever: the run may need a lock
// that the interrupted thread holds, such as malloc()'s.
template <class Predicate> static bool awaitRun(Predicate isThere) {
    constexpr int patience = 30000; // milliseconds; a stream may be slow to stop
    for (int waited = 0; !isThere(runPhase.load()); ++waited) {
        if (waited == patience)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

void MirrorManager::static_signalHandler(int signum) {
    instance->signalHandler(signum);
}

// Any thread. Calls functions that are not async-signal-safe, since the process is ending.
void MirrorManager::signalHandler(int signum) {
    announceExit();
    // The mirroring thread cannot join itself, and its handle may not even be set yet.
    const bool onRun = isMirroringThread();
    const bool runExists = !onRun && mirrorThread.joinable() && isOwnRun();
    // A stop before the run has begun would be lost.
    if (runExists)
        awaitRun([](RunPhase phase) { return phase != RunPhase::Starting; });
    writeFlag(running, false);
    // A join would never return if the run waits for a lock that this thread holds.
    if (onRun || (runExists && !awaitRun([](RunPhase phase) { return phase == RunPhase::Ended; })))
        std::puts("Error stopping mirror");
    else
        joinMirror(mirrorThread); // fails if this handler has interrupted a join
    try {
        std::exit(signum); // NOLINT(concurrency-mt-unsafe): the documented end
    } catch (...) {
        std::puts("De-init failed");
    }
}
