// Holds back changes of colour that would make the wall flash too often. It reduces flashes; it
// does not make a wall safe for everybody. docs/lightbridge.md has the rule.
#pragma once

#include "tools/wall/wallFlashMeter.h"

#include <span>
#include <vector>

namespace lightbridge {

using lights::Colour;
using panelwall::Clock;

// One thread at a time; times only go forward.
class FlashLimiter {
public:
    explicit FlashLimiter(const config::Document &document) : meter(document) {}

    // The colours that all panels of all devices are to show now, in order. Those that may not
    // change yet get the colours of the previous call. Returns whether there are any.
    bool limit(std::span<Colour> colours, Clock::time_point now);

private:
    panelwall::WallFlashMeter meter; // of the colours that were let through
    std::vector<bool> held;
};

} // namespace lightbridge
