#include "mirror/runPhase.h"

#include "mirror/signals.h"

#include <cstdio>
#include <new>
#include <pthread.h>
#include <unistd.h>

constinit std::atomic<RunPhase> runPhase{RunPhase::Idle};

namespace {
constinit std::atomic<pid_t> owner{0};        // 0: no run has been started yet
std::atomic<std::thread::id> mirroringThread; // no thread's id without a run

} // namespace

void claimRun() {
    owner = getpid();
}

bool isOwnRun() {
    const pid_t process = owner;
    return process == 0 || process == getpid();
}

void startMirroringThread(std::thread &thread, void (*run)()) {
    const HeldSignals held;
    thread = std::thread([run, mask = held.maskBefore()] {
        mirroringThread = std::this_thread::get_id();
        pthread_sigmask(SIG_SETMASK, &mask, nullptr);
        run();
        mirroringThread = std::thread::id();
    });
}

bool isMirroringThread() {
    return mirroringThread.load() == std::this_thread::get_id();
}

bool joinMirror(std::thread &thread) {
    if (thread.joinable() && !isOwnRun()) {
        releaseThread(thread);
        return true;
    }
    try {
        if (thread.joinable())
            thread.join();
        return true;
    } catch (...) {
        std::puts("Error stopping mirror");
        return false;
    }
}

void releaseThread(std::thread &thread) {
    new (&thread) std::thread;
}
