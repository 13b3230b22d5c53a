// Protects the frame buffer while a thread other than the mirroring thread uses it. The mirroring
// thread may end its run and free the buffer at any time.
#pragma once

// Held while the buffer is used. Acquiring it never waits, so a signal handler that ends the run on
// the reader's own thread cannot deadlock.
class FrameLease {
public:
    FrameLease();
    ~FrameLease();
    FrameLease(const FrameLease &) = delete;
    FrameLease &operator=(const FrameLease &) = delete;

    // Waits until no lease is held; call it when new readers can no longer get the buffer. False
    // when one is still held after a second, or is held while a signal ends the process: the buffer
    // must then not be freed.
    static bool awaitNone();
};
