// What happens when one of the signals arrives.
#include "mirror/runPhase.h"
#include "mirror/screenMirrorMac.h"
#include "mirror/sharedFlag.h"
#include "mirror/signals.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>

// Waits for the run to come to a phase, as a join would, but not for ever: it may need what the
// thread that this handler has interrupted holds, such as the lock of the C library's memory.
template <class Predicate> static bool awaitRun(Predicate isThere) {
    constexpr int patience = 30000; // milliseconds; a stream may take its time to stop
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

// Any thread. It does what a signal handler may not do by the book: the process is ending.
void MirrorManager::signalHandler(int signum) {
    announceExit();
    // The mirroring thread cannot join itself, and its handle may not even be there yet.
    const bool onRun = isMirroringThread();
    const bool runExists = !onRun && mirrorThread.joinable() && isOwnRun();
    // A stop before the run has begun would be lost.
    if (runExists)
        awaitRun([](RunPhase phase) { return phase != RunPhase::Starting; });
    writeFlag(running, false);
    // A join would be for ever if the run waits for what this thread holds.
    if (onRun || (runExists && !awaitRun([](RunPhase phase) { return phase == RunPhase::Ended; })))
        std::puts("Error stopping mirror");
    else
        joinMirror(mirrorThread); // fails inside another join
    try {
        std::exit(signum); // NOLINT(concurrency-mt-unsafe): the documented end
    } catch (...) {
        std::puts("De-init failed");
    }
}
