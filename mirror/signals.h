// The process signals that end a run.
#pragma once

#include <csignal>

// Installs `handler` for SIGINT, SIGABRT, SIGTERM, SIGBUS, SIGFPE, SIGPIPE and SIGSEGV, and
// remembers the handlers that it replaces. It runs on a thread's alternate stack if the thread has
// one, and interrupted system calls are restarted. Mirroring thread.
void installSignals(void (*handler)(int));

// Restores the handler that ours last replaced for each of these signals, unless ours has itself
// been replaced since. Called at unload: after that, our handler's code no longer exists.
void restoreSignals();

// Blocks these signals on the calling thread while it exists. Threads started meanwhile inherit the
// mask.
class HeldSignals {
public:
    HeldSignals();
    ~HeldSignals();
    HeldSignals(const HeldSignals &) = delete;
    HeldSignals &operator=(const HeldSignals &) = delete;

    const sigset_t &maskBefore() const { return before; }

private:
    sigset_t before;
};

// Records that one of these signals is ending the process. Called by their handler, on any thread.
void announceExit();

// Whether one of these signals is ending the process. Any thread.
bool endsBySignal();
