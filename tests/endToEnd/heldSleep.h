// The pauses of melt and fade mode between two looks at the screen, held by a test.
#pragma once

namespace test {

// While one of these exists, whoever sleeps for as long as these modes do between two looks sleeps
// until it is let go. One at a time.
class HeldSleep {
public:
    HeldSleep();
    // Lets the sleeper go; from here on sleeps take their time.
    ~HeldSleep();
    HeldSleep(const HeldSleep &) = delete;
    HeldSleep &operator=(const HeldSleep &) = delete;

    // Lets the sleeper go, if there is one, and waits until it, or the first, sleeps again: then
    // the mode has looked once more. False when that takes too long.
    bool awaitNext();
};

} // namespace test
