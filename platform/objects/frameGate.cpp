#include "platform/objects/frameGate.h"

namespace platform {

bool FrameGate::isFree() {
    if (!taken.load())
        return true;
    wanted.store(true);
    return !taken.load();
}

Clock::time_point FrameGate::begin() {
    const Clock::time_point now = Clock::now();
    lastBegin.store(now);
    return now;
}

void FrameGate::giveBack() {
    taken.store(false);
    if (wanted.exchange(false))
        wakeUp.signal();
}

void FrameGate::stop() {
    stopped.store(true);
    wakeUp.signal();
}

} // namespace platform
