#include "mirror/signals.h"

#include <atomic>
#include <pthread.h>

namespace {

struct HandledSignal {
    int number;
    bool installed = false;
    struct sigaction before = {}; // the host's
};

HandledSignal handledSignals[] = {{SIGINT}, {SIGABRT}, {SIGTERM}, {SIGBUS},
                                  {SIGFPE}, {SIGPIPE}, {SIGSEGV}};

void (*ourHandler)(int) = nullptr;
std::atomic<bool> exiting = false;

// Some language runtimes run threads on stacks that are too small for a handler, and give these
// threads an alternate stack. With signal() alone, the handler would not use it.
void useAlternateStack(int number) {
    struct sigaction now;
    sigaction(number, nullptr, &now);
    if (now.sa_handler != ourHandler)
        return;
    now.sa_flags |= SA_ONSTACK;
    sigaction(number, &now, nullptr);
}

} // namespace

void installSignals(void (*handler)(int)) {
    ourHandler = handler;
    for (HandledSignal &handled : handledSignals) {
        struct sigaction now;
        sigaction(handled.number, nullptr, &now);
        if (now.sa_handler != handler) {
            handled.before = now;
            handled.installed = true;
        }
        std::signal(handled.number, handler);
        useAlternateStack(handled.number);
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

void announceExit() {
    exiting = true;
}

bool endsBySignal() {
    return exiting;
}

void restoreSignals() {
    for (const HandledSignal &handled : handledSignals) {
        struct sigaction now;
        sigaction(handled.number, nullptr, &now);
        if (handled.installed && now.sa_handler == ourHandler)
            sigaction(handled.number, &handled.before, nullptr);
    }
}
