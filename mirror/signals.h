// The process signals that end a run.
#pragma once

#include <csignal>

// Installs `handler` for SIGINT, SIGABRT, SIGTERM, SIGBUS, SIGFPE, SIGPIPE and SIGSEGV, and
// remembers what the host had there. It runs on a thread's alternate stack if the thread has one,
// and interrupted system calls are restarted. Mirroring thread.
void installSignals(void (*handler)(int));

// Gives each of these signals back to what the host had before the first run, unless somebody has
// replaced our handler since. Called at unload: after it, a handler of ours would be a jump into
// nothing.
void restoreSignals();

// While it lives, none of them reaches the calling thread, nor a thread that it starts.
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

// From here on one of them is ending the process. Their handler, on any thread.
void announceExit();

// Whether one of them is ending the process. Any thread.
bool endsBySignal();
