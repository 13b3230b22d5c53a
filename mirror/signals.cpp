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

// Waits, not for ever, until a run that somebody else joins is over.
void awaitEnded() {
    constexpr int patience = 2000; // milliseconds
    for (int waited = 0; runPhase != RunPhase::ended && waited < patience; ++waited)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
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

void restoreSignals() {
    if (exiting)
        return;
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
    const bool onMirrorThread = std::this_thread::get_id() == mirrorThread.get_id();
    if (!onMirrorThread)
        runPhase.wait(RunPhase::starting); // a stop before the run has begun would be lost
    writeFlag(running, false);
    if (!joinMirror(mirrorThread)) {
        // This is the mirroring thread itself, or it was joining it when the signal came.
        if (!onMirrorThread)
            awaitEnded();
        letGo(mirrorThread);
    }
    exiting = true;
    try {
        std::exit(signum);
    } catch (...) {
        std::puts("De-init failed");
    }
}
