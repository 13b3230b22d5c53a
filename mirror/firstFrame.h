// Keeps readers from using a half-copied first frame.
//
// Reading the frame buffer while a later frame arrives mixes two consecutive frames, which is
// accepted. The first frame of a configuration is copied over black, though: the mixture was never
// on the screen, and the colours that melt, fade and palette mode take from it stay on the lights.
#pragma once

#include <atomic>

enum class FirstFrame {
    Awaited,  // no frame has been copied yet
    Arriving, // the stream's queue is copying it
    Whole,
};

extern std::atomic<FirstFrame> firstFrame;

// Stream queue: exists while a frame is copied. Only the first one changes `firstFrame`.
class FrameArrival {
public:
    FrameArrival();
    ~FrameArrival();
    FrameArrival(const FrameArrival &) = delete;
    FrameArrival &operator=(const FrameArrival &) = delete;
};

// Waits while the first frame is Arriving, for a second at most and only while `running` is set,
// since the stream's queue may be blocked. Returns the state at the end of the wait.
FirstFrame awaitFirstFrame(const bool &running);

// Calls `read`, again if the first frame arrived meanwhile, and returns the last result. If
// awaitFirstFrame() gives up, that result may mix the frame with black.
template <class Read> auto readWholeFrame(const bool &running, Read read) {
    for (;;) {
        const FirstFrame before = awaitFirstFrame(running);
        auto result = read();
        std::atomic_thread_fence(std::memory_order_seq_cst);
        if (before == firstFrame.load() || before == FirstFrame::Arriving)
            return result;
    }
}
