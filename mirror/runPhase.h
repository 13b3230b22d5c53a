// How far the one mirroring thread has come, and how to part with it.
#pragma once

#include <atomic>
#include <thread>

enum class RunPhase {
    Idle,     // no run yet
    Starting, // the thread is made but has not set `running`
    Begun,    // `running` was set: from now on a stop is seen
    Ended,    // the thread is done with everything that it shares
};

// Set by startMirror and by the mirroring thread.
extern std::atomic<RunPhase> runPhase;

// Tells that the run which is about to start is this process's.
void claimRun();

// False in a child of fork(): it has its parent's memory but none of its threads, so that the run
// which it finds there is not one that it could end or wait for.
bool isOwnRun();

// Starts the mirroring thread. Signals are held back until the thread is known as such and `thread`
// is its handle: a handler on either thread then finds both. Throws std::system_error.
void startMirroringThread(std::thread &thread, void (*run)());

// Whether the caller is the mirroring thread. To be asked from a signal handler, too.
bool isMirroringThread();

// Joins the mirroring thread if it can be joined, and lets go of another process's. False when
// joining failed, with "Error stopping mirror" on standard output.
bool joinMirror(std::thread &thread);

// Forgets a thread without joining it: another process's, or one that could not be joined.
void letGo(std::thread &thread);
