// The state of the mirroring thread, and how to start, join and release it.
#pragma once

#include <atomic>
#include <thread>

enum class RunPhase {
    Idle,     // no run yet
    Starting, // the thread is being created and has not set `running`
    Begun,    // `running` was set: from now on a stop takes effect
    Ended,    // the thread no longer uses the manager
};

// Set by startMirror and by the mirroring thread.
extern std::atomic<RunPhase> runPhase;

// Records this process as the owner of the run that is about to start.
void claimRun();

// False in a child of fork() whose parent started the last run: the child has its parent's memory
// but none of its threads, so it can neither end that run nor wait for it.
bool isOwnRun();

// Starts the mirroring thread. The signals that end a run are blocked on the caller until `thread`
// is the new thread's handle, and on the new thread until isMirroringThread() knows it. Throws
// std::system_error.
void startMirroringThread(std::thread &thread, void (*run)());

// Whether the caller is the mirroring thread. May be called from a signal handler.
bool isMirroringThread();

// Joins the mirroring thread if it is joinable; the handle of a parent process's thread is released
// instead. False when joining failed, with "Error stopping mirror" on standard output.
bool joinMirror(std::thread &thread);

// Releases a handle without joining: that of a parent process's thread, or of a thread that could
// not be joined.
void releaseThread(std::thread &thread);
