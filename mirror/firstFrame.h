// The first frame of a configuration, which is copied over black.
//
// Reading the frame buffer while a later frame arrives gives two frames of one film, which is
// accepted. A mixture of the first frame and black is a picture that was never on the screen, and
// the colours that melt, fade and palette mode take from it stay on the lights.
#pragma once

#include <atomic>

enum class FirstFrame {
    Awaited,  // the buffer is black, or somebody else's
    Arriving, // on the stream's queue
    Whole,
};

extern std::atomic<FirstFrame> firstFrame;

// Stream queue: held while a frame is copied. Only the first one makes a difference.
class FrameArrival {
public:
    FrameArrival();
    ~FrameArrival();
    FrameArrival(const FrameArrival &) = delete;
    FrameArrival &operator=(const FrameArrival &) = delete;
};

// Waits while the first frame arrives; for a second at most, and not for a run that is being
// stopped, since the stream's queue may be held up. How far the first frame has come then.
FirstFrame awaitFirstFrame(const bool &running);

// What `read` makes of the frame buffer, from before the first frame or from after it.
template <class Read> auto readWholeFrame(const bool &running, Read read) {
    for (;;) {
        const FirstFrame before = awaitFirstFrame(running);
        auto result = read();
        std::atomic_thread_fence(std::memory_order_seq_cst);
        if (before == firstFrame.load() || before == FirstFrame::Arriving)
            return result;
    }
}
