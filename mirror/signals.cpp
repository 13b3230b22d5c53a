#include "mirror/signals.h"
#include "mirror/runPhase.h"
#include "mirror/screenMirrorMac.h"
#include "mirror/sharedFlag.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <pthread.h>

namespace {

struct HandledSignal {
    int number;
    bool installed = false;
    struct sigaction before = {}; // what the host had there
};

HandledSignal handledSignals[] = {{SIGINT}, {SIGABRT}, {SIGTERM}, {SIGBUS},
                                  {SIGFPE}, {SIGPIPE}, {SIGSEGV}};

std::atomic<bool> exiting = false;

// Waits for the run to come to a phase, as a join would, but not for ever: it may need what the
// thread that this handler has interrupted holds, such as the lock of the C library's memory.
template <class Predicate> bool awaitRun(Predicate isThere) {
    constexpr int patience = 30000; // milliseconds; a stream may take its time to stop
    for (int waited = 0; !isThere(runPhase.load()); ++waited) {
        if (waited == patience)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

// Hosts with a runtime of their own run threads on stacks that have no room for a handler, and give
// these threads an alternate one. signal() alone leaves that unused.
void useAlternateStack(int number, void (*handler)(int)) {
    struct sigaction now;
    sigaction(number, nullptr, &now);
    if (now.sa_handler != handler)
        return;
    now.sa_flags |= SA_ONSTACK;
    sigaction(number, &now, nullptr);
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
        useAlternateStack(handled.number, handler);
    }
}

HeldSignals::HeldSignals() {
    sigset_t held;
    sigemptyset(&held);
    for (const HandledSignal &handled : handledSignals)
        sigaddset(&held, handled.number);
    pthread_sigmask(SIG_BLOCK, &held, &before);
}

HeldSignals::~HeldSignals() {
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
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
    exiting = true;
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
    try {
        std::exit(signum); // NOLINT(concurrency-mt-unsafe): the documented end
    } catch (...) {
        std::puts("De-init failed");
    }
}
