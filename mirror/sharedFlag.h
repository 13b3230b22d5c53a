// The manager's two flags, `running` and `captureRequested`: plain bools that one thread writes and
// another polls between sleeps. Seeing a change one cycle late is harmless, so they need no lock;
// all accesses that may meet another thread's go through here, where the thread sanitizer is told
// to look away.
#pragma once

inline bool readFlag(const bool &flag) {
    return flag;
}

inline void writeFlag(bool &flag, bool value) {
    flag = value;
}
