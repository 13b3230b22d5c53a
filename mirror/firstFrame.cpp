#include "mirror/firstFrame.h"

#include "mirror/sharedFlag.h"

#include <chrono>
#include <thread>

constinit std::atomic<FirstFrame> firstFrame{FirstFrame::Awaited};

FrameArrival::FrameArrival() {
    FirstFrame awaited = FirstFrame::Awaited;
    firstFrame.compare_exchange_strong(awaited, FirstFrame::Arriving);
    std::atomic_thread_fence(std::memory_order_seq_cst);
}

FrameArrival::~FrameArrival() {
    FirstFrame arriving = FirstFrame::Arriving;
    firstFrame.compare_exchange_strong(arriving, FirstFrame::Whole);
}

FirstFrame awaitFirstFrame(const bool &running) {
    constexpr int patience = 1000; // milliseconds
    for (int waited = 0; waited < patience; ++waited) {
        const FirstFrame now = firstFrame;
        if (now != FirstFrame::Arriving || !readFlag(running))
            return now;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return FirstFrame::Arriving;
}
