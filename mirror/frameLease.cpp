#include "mirror/frameLease.h"

#include "mirror/signals.h"

#include <atomic>
#include <chrono>
#include <thread>

namespace {
constinit std::atomic<int> leases{0};
}

FrameLease::FrameLease() {
    ++leases;
}

FrameLease::~FrameLease() {
    --leases;
}

bool FrameLease::awaitNone() {
    constexpr int patience = 1000; // milliseconds
    for (int waited = 0; leases != 0; ++waited) {
        // A signal may have interrupted the reader, which then never finishes.
        if (waited == patience || endsBySignal())
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}
