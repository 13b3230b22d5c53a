#include "mirror/signals.h"
#include "mirror/runPhase.h"
#include "mirror/screenMirrorMac.h"
#include "mirror/sharedFlag.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace {

struct HandledSignal {
    int number;
    bool installed = false;
    struct sigaction before = {}; // what the host had there
};

HandledSignal handledSignals[] = {{SIGINT}, {SIGABRT}, {SIGTERM}, {SIGBUS},
                                  {SIGFPE}, {SIGPIPE}, {SIGSEGV}};

bool exiting = false;

// Waits for the run to come to a phase, but not for ever: it may need what the thread that this
// handler has interrupted holds.
template <class Predicate> bool awaitRun(Predicate isThere) {
    constexpr int patience = 5000; // milliseconds; a stream's stop takes up to three seconds
    for (int waited = 0; !isThere(runPhase.load()); ++waited) {
        if (waited == patience)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

} // namespace

void installSignals(void (*handler)(int)) {
    for (HandledSignal &handled : handledSignals) {
        struct sigaction now;
        sigaction(handled.number, nullptr, &now);
        if (now.sa_handler != handler) {
            handled.before = now;
            handled.installed = true;
        }
        std::signal(handled.number, handler);
    }
}

bool endsBySignal() {
    return exiting;
}

void restoreSignals() {
    for (const HandledSignal &handled : handledSignals) {
        struct sigaction now;
        sigaction(handled.number, nullptr, &now);
        if (handled.installed && now.sa_handler == MirrorManager::static_signalHandler)
            sigaction(handled.number, &handled.before, nullptr);
    }
}

void MirrorManager::static_signalHandler(int signum) {
    instance->signalHandler(signum);
}

// Any thread. It does what a signal handler may not do by the book: the process is ending.
void MirrorManager::signalHandler(int signum) {
    // The mirroring thread cannot join itself, and its handle may not even be there yet.
    const bool onRun = isMirroringThread();
    const bool runExists = !onRun && mirrorThread.joinable() && isOwnRun();
    // A stop before the run has begun would be lost.
    if (runExists)
        awaitRun([](RunPhase phase) { return phase != RunPhase::starting; });
    writeFlag(running, false);
    // A join would be for ever if the run waits for what this thread holds.
    if (onRun || (runExists && !awaitRun([](RunPhase phase) { return phase == RunPhase::ended; })))
        std::puts("Error stopping mirror");
    else
        joinMirror(mirrorThread); // fails inside another join
    exiting = true;
    try {
        std::exit(signum); // NOLINT(concurrency-mt-unsafe): the documented end
    } catch (...) {
        std::puts("De-init failed");
    }
}
