// The process signals that end a run.
#pragma once

// Installs `handler` for SIGINT, SIGABRT, SIGTERM, SIGBUS, SIGFPE, SIGPIPE and SIGSEGV, and
// remembers what the host had there. Mirroring thread.
void installSignals(void (*handler)(int));

// Gives each of these signals back to what the host had before the first run, unless somebody has
// replaced our handler since. Called at unload: after it, a handler of ours would be a jump into
// nothing.
void restoreSignals();

// Whether the process is exiting because of one of them. Asked while it exits.
bool endsBySignal();
