#include "mirror/runPhase.h"

#include <cstdio>
#include <new>

constinit std::atomic<RunPhase> runPhase{RunPhase::idle};

bool joinMirror(std::thread &thread) {
    try {
        if (thread.joinable())
            thread.join();
        return true;
    } catch (...) {
        std::puts("Error stopping mirror");
        return false;
    }
}

void letGo(std::thread &thread) {
    new (&thread) std::thread;
}
