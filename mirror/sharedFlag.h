// The manager's two flags, `running` and `captureRequested`: plain bools that one thread writes and
// another polls between sleeps. Seeing a change one cycle late is harmless, so they need no lock;
// all accesses that may meet another thread's go through here, where the thread sanitizer is told
// to look away.
//
// They are volatile accesses: a loop that polls a flag and calls nothing must read it each time.
#pragma once

inline bool readFlag(const bool &flag) {
    const volatile bool &now = flag; // a cast would do, but some compilers lose it
    return now;
}

inline void writeFlag(bool &flag, bool value) {
    volatile bool &now = flag;
    now = value;
}
