// Reading the frame buffer from outside the mirroring thread, which may end its run and free the
// buffer at any moment.
#pragma once

// Held while a frame is read. Taking it never waits, so that a signal handler which ends the run on
// the reader's own thread cannot be locked out.
class FrameLease {
public:
    FrameLease();
    ~FrameLease();
    FrameLease(const FrameLease &) = delete;
    FrameLease &operator=(const FrameLease &) = delete;

    // Waits until nobody reads a buffer that is no longer handed out. False when somebody still
    // does after a second, or a signal is ending the process: the buffer must then not be freed.
    static bool awaitNone();
};
