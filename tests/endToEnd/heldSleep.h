// Lets a test hold the pauses of melt and fade mode between two polls of the screen.
#pragma once

namespace test {

// While a HeldSleep exists, every sleep as long as these pauses lasts until it is released. At most
// one object at a time.
class HeldSleep {
public:
    HeldSleep();
    // Releases the sleeper; later sleeps take their normal time.
    ~HeldSleep();
    HeldSleep(const HeldSleep &) = delete;
    HeldSleep &operator=(const HeldSleep &) = delete;

    // Releases the sleeper, if any, and waits for the next sleep: by then the mode has polled the
    // screen once more. False after a timeout.
    bool awaitNext();
};

} // namespace test
