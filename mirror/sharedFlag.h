// The manager's two flags, `running` and `captureRequested`: plain bools that one thread writes and
// another polls between sleeps. Seeing a change one cycle late is harmless, so they need no lock.
// All accesses that may race go through these functions, which the thread sanitizer is configured
// to ignore.
//
// The accesses are volatile so that a loop that polls a flag reads it each time.
#pragma once

inline bool readFlag(const bool &flag) {
    const volatile bool &now = flag; // a cast would do, but some compilers drop it
    return now;
}

inline void writeFlag(bool &flag, bool value) {
    volatile bool &now = flag;
    now = value;
}
